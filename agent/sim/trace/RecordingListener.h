// What happens, as the lines that a page is made of.
#pragma once

#include "session/SessionRecord.h"
#include "sim/trace/EventListener.h"

namespace sim {

class RecordingListener final : public EventListener {
  public:
    /// `record` has to outlive it.
    explicit RecordingListener(session::SessionRecord& record) : record_(record) {}

    void onEvent(const Event& event) noexcept override;

  private:
    session::SessionRecord& record_;
};

}  // namespace sim
