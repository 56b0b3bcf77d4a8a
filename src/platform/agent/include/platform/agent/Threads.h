// The agent's OS abstraction library (threads), as the module uses it.
#pragma once

#include "platform/agent/Api.h"

#include <cstdint>

/// A thread object. The caller allocates it; `KRXThreadConstruct` prepares it, `KRXThreadDestroy` gives back
/// what the library keeps in it, and only then may the caller release the memory.
struct KRXThread {
    void* state = nullptr;  ///< the library's own
};

extern "C" {

using KRXThreadHandle = void*;
/// A thread's entry function; what it returns is not read by the module.
using KRXThreadEntry = int (*)(void* argument);

/// The calling thread's handle, valid as long as that thread runs.
KRX_API KRXThreadHandle KRXThreadGetHandleSelf();
/// The priority of a thread.
KRX_API int KRXThreadGetPriority(KRXThreadHandle thread);

/// Prepares a thread object. 0, or another value on failure (the caller then releases the memory).
KRX_API std::int8_t KRXThreadConstruct(KRXThread* thread);
/// Starts `entry(argument)` on a new thread. 0 when it runs; else the object must be destroyed. The module
/// asks for the priority of the calling thread, flags 0 and a stack size of 4096, whose unit is the
/// library's. It cannot be bytes: the thread takes more, even with an agent that does next to nothing. 64
/// KiB are ample.
KRX_API std::int8_t KRXThreadStart(KRXThread* thread, const char* name, int priority, int flags,
                                   unsigned int stackSize, KRXThreadEntry entry, void* argument);
/// Non-zero while the thread runs.
KRX_API int KRXThreadIsActive(KRXThread* thread);
/// Waits at most `milliseconds` for the thread to end. 0 when it has ended.
KRX_API std::int8_t KRXWaitForThread(KRXThread* thread, int* result, unsigned int milliseconds);
/// Frees the library's part of a thread object, which may be released afterwards. It does not wait for a
/// thread that still runs. What becomes of that thread is the agent's choice, and nothing else may be relied
/// on: it may be stopped for good at its next sleep, or wherever it is (its frames dropped, robust mutexes
/// that it holds left without an owner); it may be unwound as by pthread_cancel, through the frames of the
/// module; and it may run on for a while, or for ever. So nothing may be owned across a sleep, and a thread
/// that comes back must find what it uses.
KRX_API void KRXThreadDestroy(KRXThread* thread);
/// Blocks the calling thread.
KRX_API void KRXThreadSleep(unsigned int milliseconds);
}
