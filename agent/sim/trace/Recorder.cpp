#include "sim/trace/Recorder.h"

#include "lib/Place.h"
#include "lib/Thread.h"
#include "sim/time/Clock.h"
#include "sim/trace/StdoutCapture.h"
#include "sim/trace/TraceFile.h"

namespace sim {

namespace {

Value number(std::int64_t value) {
    return value;
}

Value text(std::string_view value) {
    return std::optional<std::string>(value);
}

std::string currentThread() {
    const agent::Thread* thread = agent::Thread::current();
    return thread == nullptr ? "host" : thread->name();
}

}  // namespace

void Recorder::recordCall(Fields fields, const std::string& remark) {
    const agent::Place place("the trace", agent::Place::Side::agent);
    recordStdout();
    recordOf(currentThread(), "call", std::move(fields), remark);
    trace_.flush();
}

void Recorder::recordFile(const std::string& path, const std::optional<std::string>& contents) {
    record("file", {{"path", text(path)}, {"text", contents}});
}

void Recorder::onLog(int level, std::string_view line) {
    record("log", {{"level", number(level)}, {"text", text(line)}});
}

void Recorder::onCredentials(const char* memberId) {
    record("credentials", {{"member", memberId == nullptr ? Value() : text(memberId)}});
}

void Recorder::onForcePoll() {
    record("force-poll", {});
}

void Recorder::onUpdateAsset(std::int8_t result, const agent::NamedValues& properties) {
    record("update-asset", {{"result", number(result)}, {"properties", std::optional(properties)}});
}

void Recorder::onThreadStart(const std::string& name, std::int8_t result) {
    record("thread-start", {{"name", text(name)}, {"result", number(result)}});
}

void Recorder::onThreadEnd(int result) {
    recordStdout();
    record("thread-end", {{"result", number(result)}});
}

void Recorder::onThreadDestroyed(const std::string& name) {
    recordOf(name, "thread-destroyed", {});
}

void Recorder::onSleep(unsigned int milliseconds) {
    recordStdout();
    record("sleep", {{"ms", number(milliseconds)}});
}

void Recorder::record(std::string_view name, Fields fields) {
    recordOf(currentThread(), name, std::move(fields));
}

void Recorder::recordOf(const std::string& thread, std::string_view name, Fields fields,
                        const std::string& remark) {
    const Event event = eventOf(thread, name, std::move(fields), remark);
    trace_.write(event);
    tellListeners(event);
}

Event Recorder::eventOf(const std::string& thread, std::string_view name, Fields fields,
                        const std::string& remark) const {
    const agent::Thread* const self = agent::Thread::current();
    return {clock_.now(),
            clock_.wall(),
            thread,
            name,
            std::move(fields),
            remark,
            self != nullptr && !self->isOwned()};
}

void Recorder::tellListeners(const Event& event) {
    for (const Listener& listener : listeners_) {
        listener(event);
    }
}

void Recorder::recordStdout() {
    std::string written = capture_.take();
    if (!written.empty()) {
        record("stdout", {{"text", text(written)}});
    }
}

}  // namespace sim
