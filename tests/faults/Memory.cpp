// Allocations. What the C++ library does not get it cannot hand out, so `operator new` fails through these,
// too, except under a sanitizer, which has its own; hence both.
#include "Faults.h"

#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

thread_local bool within __attribute__((tls_model("initial-exec"))) = false;

/// Of one request that goes through several of the functions below only the outermost counts.
class Request final {
  public:
    Request() noexcept : outermost_(!within) { within = true; }
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;
    ~Request() {
        if (outermost_) {
            within = false;
        }
    }
    bool fails() const noexcept { return outermost_ && faults::memoryFails(); }

  private:
    bool outermost_;
};

void* (*knownMalloc)(std::size_t) = nullptr;
void* (*knownCalloc)(std::size_t, std::size_t) = nullptr;
void* (*knownRealloc)(void*, std::size_t) = nullptr;
void* (*knownNew)(std::size_t) = nullptr;
void* (*knownNewArray)(std::size_t) = nullptr;

/// `allocate(size)`, unless it is to fail: then `fail()`.
template <typename Allocate, typename Fail>
void* request(Allocate&& allocate, Fail&& fail) {
    {
        const Request outer;
        if (!outer.fails()) {
            return allocate();
        }
    }
    return fail();
}

void* withError() noexcept {
    errno = ENOMEM;
    return nullptr;
}

void* withException() {
    throw std::bad_alloc();
}

}  // namespace

using faults::next;

extern "C" {

INTERPOSED void* malloc(std::size_t size) {
    return request([&] { return next(knownMalloc, "malloc")(size); }, withError);
}

INTERPOSED void* calloc(std::size_t count, std::size_t size) {
    return request([&] { return next(knownCalloc, "calloc")(count, size); }, withError);
}

INTERPOSED void* realloc(void* memory, std::size_t size) {
    return request([&] { return next(knownRealloc, "realloc")(memory, size); }, withError);
}
}

INTERPOSED void* operator new(std::size_t size) {
    const auto allocate = [&] { return next(knownNew, "_Znwm")(size); };
    return request(allocate, withException);
}

INTERPOSED void* operator new[](std::size_t size) {
    const auto allocate = [&] { return next(knownNewArray, "_Znam")(size); };
    return request(allocate, withException);
}

INTERPOSED void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return ::operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

INTERPOSED void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return ::operator new[](size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
