#include "Host.h"

#include "lib/Thread.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>

namespace {

using namespace std::chrono_literals;

constexpr sim::Instant kBegin = 1772359200s;  // 2026-03-01T10:00:00Z

// As the profile has them.
constexpr std::size_t kMode = 0;
constexpr std::size_t kDelayedStart = 5;

constexpr std::string_view kLater = "12:00:00";  // no play comes so far; what starts then waits
constexpr auto kLongest = 1h;                    // of what the clients do

/// "10:05:00" of "2026-01-03 GMT 10:05:00".
std::string timeOfDay(const std::string& date) {
    return date.substr(std::min(date.rfind(' '), date.size() - 1) + 1);
}

/// When the stored schedule starts.
std::string storedTime() {
    std::ifstream file("state/schedule.xml");
    const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const std::size_t element = text.find("<RSMStartTime>");
    return element == std::string::npos ? "" : text.substr(text.find('>', element) + 1, kLater.size());
}

}  // namespace

Host::Host()
    : clock_(kBegin),
      scheduler_(clock_),
      host_({this, this, &scheduler_}),
      image_(ZEPHAN_MODULE),
      families_(library_, host_.serviceAgent(), workspace_) {
    turns::scheduler = &scheduler_;
    sim::showTimeOf(&clock_);
    workspace_.write("config.xml",
                     support::replaced(kConfiguration, "<ListnerSet>",
                                       "<FileLogging><LogFilePath>log/log.xml</LogFilePath></FileLogging>"
                                       "<ListnerSet><FileListner>on</FileListner>"));
    host_.setRouting(false);
    families_.start(Families::logger);
    families_.start(Families::rsm);
    families_.start(Families::webService);
    service_ = families_.createService();
    audit("");  // what is made with the first one is there
}

Host::~Host() {
    families_.destroyService(service_);
    stop();
    sim::showTimeOf(nullptr);
    turns::scheduler = nullptr;
}

void Host::begin() {
    std::filesystem::remove("state/schedule.xml");
    std::filesystem::remove("state/resume.xml");
    std::filesystem::resize_file("log/log.xml", 0);
    families_.start(Families::dataSource);
}

void Host::play(const std::vector<Client>& clients, int polls) {
    for (const auto& [name, work] : clients) {
        agent::Thread* const client = scheduler_.construct(agent::Thread::Kind::agent);
        client->prepare(name, 0, [this, &act = work, polls] {
            agent::Thread::block(agent::Thread::kForever, [&] { return polls_ >= polls; });
            act(*this);
            scheduler_.change([this] { ++finished_; });
            return 0;
        });
        scheduler_.start(*client);
        clients_.push_back(client);
    }
    Explorer::begin();
    agent::Thread::block(kLongest, [&] { return finished_ == clients.size(); });
    Explorer::end();
}

void Host::start() {
    told_.clear();  // what a start finds, it tells
    for (const int family : {Families::dataSource, Families::logger, Families::rsm, Families::webService}) {
        families_.start(family);
    }
}

void Host::stop() {
    wasStopped_ = true;
    families_.stop(Families::rsm);
    families_.stop(Families::logger);
}

void Host::schedule(const char* time) {
    if (command("ScheduleRSM",
                {{"RSMStartDate", "2026:03:01"}, {"RSMStartTime", time}, {"PollingRate", "20"}}) == "Pass") {
        scheduler_.change([&] { schedules_.push_back(time); });
    }
}

void Host::log(const std::string& text) {
    library_.ZPXRSMLoggerLog(ZP_LEVEL_FORCE, text.c_str());
    entries_.push_back(text);
}

void Host::killThread() {
    killed_ = true;
    scheduler_.endThread(agent::ThreadDestroy::anywhere);
}

void Host::pass(int milliseconds) {
    agent::Thread::block(std::chrono::milliseconds(milliseconds), [] { return false; });
}

void Host::readLate() {
    std::setvbuf(std::freopen("log/echo", "w", stdout), nullptr, _IONBF, 0);
    turns::isRead = [this] { return finished_ + 1 >= clients_.size(); };
}

void Host::onLog(int /*level*/, std::string_view text) {
    isNotStored_ |= text.find("Unable to put the schedule in file") != std::string_view::npos;
    isUnconfigured_ |= text.find("Failed to get pointer for XMLConfigData") != std::string_view::npos;
    constexpr const char* kPoint = "KRXLog";
    if (turns::point != kPoint) {  // between two lines nothing happens that others can see
        turns::offer(kPoint);
    }
}

void Host::onForcePoll() {
    scheduler_.change([this] { ++polls_; });
    turns::offer("ForcePoll");
}

std::int8_t Host::receive(const std::string& /*member*/, const agent::NamedValues& properties) {
    const agent::Thread* const sender = agent::Thread::current();
    if (slow_ == kEverybody || (sender != nullptr && sender->name() == slow_)) {
        pass(1000);
    }
    if (awaitsOrder_) {
        agent::Thread::block(agent::Thread::kForever, [this] { return finished_ > 0; });
    }
    told_ = properties;
    turns::offer("UpdateAsset");
    return 0;
}

std::string Host::command(const char* name, std::vector<std::pair<std::string, std::string>> properties) {
    std::vector<Prop> records;
    for (auto& [property, value] : properties) {
        records.push_back({property.data(), nullptr, nullptr, value.data()});
    }
    const PropList list{records.data(), static_cast<std::int32_t>(records.size())};
    PropList* response = nullptr;
    library_.ZPXRSMDSExectue(nullptr, nullptr, name, &list, &response);
    if (response == nullptr) {
        return "";
    }
    const std::string result = response->properties[0].value;
    library_.ZPXRSMDSDestroyPropList(nullptr, nullptr, response);
    return result;
}

std::string Host::told(std::size_t property) const {
    return property < told_.size() ? told_[property].second.value_or("") : "";
}

void Host::idle(int seconds) {
    scheduler_.idle(clock_.now() + std::chrono::seconds(seconds), false);
}

std::string Host::judge() {
    if (finished_ != clients_.size()) {
        return "a client does not come back: " + scheduler_.whoWaitsWhere();
    }
    audit("closed");  // what is open still
    if (wasStopped_) {
        log("the end");
        if (isUnconfigured_ && workspace_.read("log/log.xml").find("the end") != std::string::npos) {
            return "there is a log file, and no configuration";
        }
        start();
    }
    if (killed_ && connect("10", "20") != 0) {
        return "no order is taken after the end of the thread";
    }
    if (std::string failure = judgeState(); !failure.empty()) {
        return failure;
    }
    const std::string waiting = timeOfDay(told(kDelayedStart));
    const std::string mode = told(kMode);
    const std::string answer = command("ExitRSM", {});
    const std::string expected =
        mode == "FORCE_POLL_GRACE" ? "Thread exited successfully." : "Agent is not in RSM.";
    if (answer != expected) {
        return "told last: " + mode + ", but ExitRSM answers " + answer;
    }
    if (schedules_.empty()) {
        return judgeLog();
    }
    stop();
    if (scheduler_.activeThreads() != 0) {
        return "a thread of the module is left after the stop: " + scheduler_.whoWaitsWhere();
    }
    start();
    if (std::string failure = judgeState(); !failure.empty()) {
        return "after a restart: " + failure;
    }
    if (timeOfDay(told(kDelayedStart)) != waiting) {
        return "before the restart '" + waiting + "' is scheduled, not so afterwards";
    }
    return judgeLog();
}

std::string Host::judgeLog() const {
    for (const std::string file : {"log/log.xml", "log/echo"}) {
        const std::string written = workspace_.read(file);
        for (const std::string& entry : entries_) {
            const std::size_t first = written.find(entry);
            if ((first == std::string::npos && !wasStopped_ && workspace_.exists(file)) ||
                written.find(entry, first + 1) != std::string::npos) {
                return "not once in " + file + ": " + entry;
            }
        }
    }
    return {};
}

/// Whether the module does what it told, and what is stored is what was told.
std::string Host::judgeState() {
    constexpr int kWindow = 45;  // seconds: more than two polls
    std::string mode;
    int before = 0;
    idle(10);
    do {
        mode = told(kMode);
        before = polls_;
        idle(kWindow);
    } while (mode != told(kMode));
    const bool polls = polls_ != before;
    if (mode == "FORCE_POLL_ACTIVITY") {
        return "nothing is open, and the activity does not end";
    }
    const bool isOn = !mode.empty() && mode != "NOT_ACTIVE";
    if (polls != isOn) {
        return "told last: " + mode + ", but there are " + (polls ? "" : "no ") + "polls";
    }
    if (isOn && !workspace_.exists("state/resume.xml")) {
        return "RSM is on, and nothing is kept to resume it";
    }
    const std::string waiting = timeOfDay(told(kDelayedStart));
    const bool isWaiting = !waiting.empty();
    if (scheduler_.activeThreads() != (isOn || isWaiting ? 1 : 0)) {
        return "told last: " + mode + " and '" + waiting + "', with " +
               std::to_string(scheduler_.activeThreads()) + " threads of the module";
    }
    if (const std::string stored = storedTime(); isWaiting ? stored != waiting : stored >= kLater) {
        return "told last: '" + waiting + "', but '" + stored + "' is stored";
    }
    if (!isWaiting && !isNotStored_ &&
        std::any_of(schedules_.begin(), schedules_.end(), [](const auto& time) { return time >= kLater; })) {
        return "what was ordered is neither scheduled nor stored";
    }
    return {};
}
