// What clang checks with -Wthread-safety: which lock a field needs. Nothing for other compilers.
#pragma once

#if defined(__clang__)
#define ZEPHAN_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define ZEPHAN_THREAD_SAFETY(attribute)
#endif

#define CAPABILITY(name) ZEPHAN_THREAD_SAFETY(capability(name))
#define SCOPED_CAPABILITY ZEPHAN_THREAD_SAFETY(scoped_lockable)
#define GUARDED_BY(lock) ZEPHAN_THREAD_SAFETY(guarded_by(lock))
#define ACQUIRES(lock) ZEPHAN_THREAD_SAFETY(acquire_capability(lock))
#define RELEASES() ZEPHAN_THREAD_SAFETY(release_capability())
#define REQUIRES(lock) ZEPHAN_THREAD_SAFETY(requires_capability(lock))
#define UNCHECKED ZEPHAN_THREAD_SAFETY(no_thread_safety_analysis)
