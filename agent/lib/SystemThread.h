// What the operating system does for the threads of the agent.
#pragma once

#include <csetjmp>
#include <string>
#include <thread>

/// Marks the frame to which `std::longjmp` comes back, dropping the frames above as they are.
#ifdef _WIN64
#define AGENT_MARK_WAY_OUT(way) \
    _setjmp(way, nullptr)  // without a frame the system unwinds nothing on the way
#else
#define AGENT_MARK_WAY_OUT(way) setjmp(way)
#endif

namespace agent::system {

/// Whether threads can be unwound from outside at all. Where they cannot, nothing here that
/// unwinds is called.
bool canUnwind();
/// Whether the calling thread may be unwound from now on; answers what held before.
bool admitUnwinding(bool admitted);
/// Has a thread unwound, as soon as it admits that.
void unwind(std::thread& thread);
/// Unwinds the calling thread, of which that was wanted. `bottom` is where the stack began.
void beUnwound(const void* bottom);

/// The calling thread's name for debuggers; 15 characters at most.
void nameThread(const std::string& name);

/// Tells leak checkers that what the frames up to `bottom` hold, which are about to be dropped, is the end
/// that they were given and no leak.
void forgiveFrames(const void* bottom);

}  // namespace agent::system
