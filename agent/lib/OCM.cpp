#include "lib/OCM.h"

#include "lib/Plugs.h"
#include "lib/Runtime.h"
#include "lib/Thread.h"
#include "platform/agent/Logging.h"

#include <memory>

namespace KRX::Messaging {

namespace {

/// A record on its way; the last of sender and link thread keeps it.
struct Record {
    std::string member;
    agent::NamedValues properties;
    std::int8_t answer = -1;
    bool answered = false;
};

std::int8_t ask(agent::Enterprise* enterprise, const Record& record) {
    const agent::Place place("the answer of the enterprise", agent::Place::Side::agent);
    const std::chrono::milliseconds delay = agent::settings().enterpriseDelay;
    if (delay.count() > 0) {
        agent::Thread::block(delay, [] { return false; });
    }
    return enterprise == nullptr ? std::int8_t{0} : enterprise->receive(record.member, record.properties);
}

/// The work of a link thread: what an agent tells of a record that it sends, and the sending.
int send(agent::Enterprise* enterprise, Record& record) {
    KRXLog(level::kInfo, "Registration: sending the record of %s\n", record.member.c_str());
    const std::int8_t answer = ask(enterprise, record);
    agent::callAuditHook(("Registration: the record of " + record.member + " was answered\n").c_str());
    agent::runtime().change([&record, answer] {
        record.answer = answer;
        record.answered = true;
    });
    return 0;
}

std::int8_t deliverByLink(agent::Enterprise* enterprise, const std::shared_ptr<Record>& record) {
    agent::Runtime& runtime = agent::runtime();
    agent::Thread* link = runtime.construct(agent::Thread::Kind::agent);
    link->prepare("Link", 0, [enterprise, record] { return send(enterprise, *record); });
    const bool started = runtime.start(*link);
    runtime.release(*link);
    if (!started) {
        return -1;
    }
    agent::Thread::block(agent::Thread::kForever, [&record] { return record->answered; });
    return record->answer;
}

}  // namespace

std::int8_t OCM::deliver(const std::string& member, const agent::NamedValues& properties) {
    const auto record = std::make_shared<Record>(Record{member, properties});
    return agent::settings().linkThread ? deliverByLink(enterprise_, record) : ask(enterprise_, *record);
}

}  // namespace KRX::Messaging
