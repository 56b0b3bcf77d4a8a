// Where a thread is: in the module, or in a function of the agent.
#pragma once

#include "platform/agent/Api.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace agent {

class Place;

/// What another thread can see of where a thread is.
struct Whereabouts {
    std::atomic<const Place*> innermost = nullptr;
    std::atomic<bool> inModule = false;    ///< its side; a place itself may end while it is looked at
    std::atomic<std::uint64_t> moves = 0;  ///< counts how often a place was entered
};

/// A place in which the calling thread is as long as the object lives. Places of a thread nest, so that who
/// finds that nothing goes on any more can tell who waits where.
class KRX_API Place final {
  public:
    enum class Side : std::uint8_t { module, agent };

    /// `name` must outlive the object.
    Place(const char* name, Side side);
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    ~Place();

    /// Of the calling thread; valid as long as it runs.
    static Whereabouts& here();
    /// Whether that thread runs code of the module.
    static bool isInModule(const Whereabouts& thread);
    /// The places from the outermost on, as "stop rsm, KRXWaitForThread"; only of a thread that stands still.
    static std::string describe(const Whereabouts& thread);

  private:
    const char* name_;
    Side side_;
    const Place* outer_;
};

}  // namespace agent
