#include "sim/console/Console.h"

#include "sim/Event.h"
#include "sim/OrderQueue.h"
#include "sim/Verbs.h"
#include "sim/console/ClientStream.h"
#include "sim/console/ClientThreads.h"
#include "sim/console/LiveSession.h"
#include "sim/console/OrderForm.h"
#include "sim/console/OwnPages.h"
#include "sim/console/RegistrationText.h"
#include "sim/console/ServiceRequest.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <limits>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace sim {

namespace {

using httplib::ContentReader;
using httplib::Request;
using httplib::Response;

constexpr std::size_t kLargestBody = std::size_t{64} * 1024;
constexpr ClientStream::Limits kLimits = {std::chrono::seconds(10), kLargestBody + std::size_t{64} * 1024,
                                          std::chrono::seconds(5)};
constexpr std::size_t kMostClients = 600;
constexpr int kMostFollowers = 400;  ///< of the clients, those that follow the events and stay
constexpr int kBacklog = 512;
constexpr std::chrono::seconds kOrderTime(30);
constexpr std::chrono::seconds kHeartbeat(5);
constexpr std::chrono::milliseconds kFarewell(500);
constexpr int kLargestPort = 65535;

enum Status : int {
    ok = 200,
    badRequest = 400,
    forbidden = 403,
    notFound = 404,
    conflict = 409,
    tooLarge = 413,
    unsupported = 415,
    failed = 500,
    unavailable = 503,
    tooLate = 504,
};

void refuse(Response& response, Status status, const std::string& reason) {
    response.status = status;
    response.set_content(reason + "\n", "text/plain; charset=utf-8");
}

/// The body, or none and a response that says why.
std::optional<std::string> bodyOf(const Request& request, const ContentReader& reader, Response& response) {
    if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding")) {
        return "";  // none is announced; the library would wait for one until the client leaves
    }
    std::string body;
    bool fits = true;
    const bool complete = reader([&](const char* data, std::size_t size) {
        fits = body.size() + size <= kLargestBody;
        if (fits) {
            body.append(data, size);
        }
        return fits;
    });
    if (!fits || response.status == tooLarge) {
        refuse(response, tooLarge, "the body is larger than 64 KiB");
    } else if (!complete) {
        refuse(response, badRequest, "the body did not come");
    } else {
        return body;
    }
    return std::nullopt;
}

/// The number of the first event that a follower does not know yet.
std::uint64_t firstWanted(const Request& request) {
    const auto number = [](const std::string& text) {
        return parseCount(text, std::numeric_limits<unsigned int>::max());
    };
    if (const auto last = number(request.get_header_value("Last-Event-ID"))) {
        return std::uint64_t{*last} + 1;
    }
    return number(request.get_param_value("after")).value_or(0);
}

}  // namespace

/// One request a connection, each in a thread of its own.
class Console::Server final : public httplib::Server {
  public:
    Server(const Place& place, LiveSession& session, OrderQueue& orders, std::function<std::string()> status)
        : session_(session), orders_(orders), status_(std::move(status)), pages_(place.address, 0) {
        new_task_queue = [] { return new ClientThreads(kMostClients); };
        set_payload_max_length(kLargestBody);
        // Programs that the module starts must not keep the port.
        set_socket_options([](socket_t socket) {
            const int yes = 1;
            ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
            ::fcntl(socket, F_SETFD, FD_CLOEXEC);
        });
        port_ = place.port;
        errno = 0;
        const bool bound =
            port_ == 0 ? (port_ = bind_to_any_port(place.address)) > 0 : bind_to_port(place.address, port_);
        if (!bound || ::listen(svr_sock_, kBacklog) != 0) {
            throw std::runtime_error(place.address + ":" + std::to_string(place.port) + ": cannot listen: " +
                                     (errno == 0 ? "no such address" : std::strerror(errno)));
        }
        pages_ = OwnPages(place.address, port_);
        setRoutes();
        thread_ = std::thread([this] { listen_after_bind(); });
        while (!is_running()) {
            std::this_thread::yield();
        }
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;
    ~Server() override {
        session_.close();
        orders_.close();
        letFollowersEnd();
        stop();
        {
            const std::lock_guard lock(mutex_);
            over_ = true;
            for (const socket_t socket : clients_) {
                ::shutdown(socket, SHUT_RDWR);
            }
        }
        thread_.join();
    }

    int port() const { return port_; }

  private:
    bool process_and_close_socket(socket_t socket) override {
        ::fcntl(socket, F_SETFD, FD_CLOEXEC);
        {
            const std::lock_guard lock(mutex_);
            if (over_) {
                ::shutdown(socket, SHUT_RDWR);
            }
            clients_.insert(socket);
        }
        ClientStream stream(socket, kLimits);
        bool closed = false;
        // The answers are small and made anew each time; thousands of ranges would make a giant of one.
        const bool served =
            process_request(stream, true, closed, [](Request& request) { request.ranges.clear(); });
        stream.drain();
        const std::lock_guard lock(mutex_);
        clients_.erase(socket);
        ::close(socket);
        return served;
    }

    /// Those that follow the events are told of the end, and leave by themselves unless they are slow.
    void letFollowersEnd() const {
        const auto deadline = std::chrono::steady_clock::now() + kFarewell;
        while (followers_ > 0 && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    }

    void setRoutes();
    bool isRefused(const Request& request, Response& response) const;
    void follow(const Request& request, Response& response);
    void callService(const std::string& body, Response& response);
    void doForm(const std::string& name, const std::string& body, Response& response);
    /// The outcome of lines that were performed, or none and a response that says why.
    std::optional<OrderQueue::Outcome> perform(std::vector<std::string> lines, Response& response);

    LiveSession& session_;
    OrderQueue& orders_;
    std::function<std::string()> status_;
    OwnPages pages_;
    int port_ = 0;
    std::thread thread_;
    std::atomic<int> followers_ = 0;
    std::mutex mutex_;  ///< of the two below
    std::set<socket_t> clients_;
    bool over_ = false;
};

bool Console::Server::isRefused(const Request& request, Response& response) const {
    const std::string host = request.get_header_value("Host");
    if (!pages_.isOwnHost(host)) {
        refuse(response, forbidden, "this host is not served here: " + host);
    } else if (request.has_header("Origin") &&
               !OwnPages::isOwnOrigin(request.get_header_value("Origin"), host)) {
        refuse(response, forbidden,
               "pages of another origin may not ask: " + request.get_header_value("Origin"));
    } else if (request.is_multipart_form_data()) {
        refuse(response, unsupported, "the body must stand as it is");
    } else {
        return false;
    }
    return true;
}

void Console::Server::setRoutes() {
    set_default_headers({{"Cache-Control", "no-store"},
                         {"X-Content-Type-Options", "nosniff"},
                         {"X-Frame-Options", "DENY"},
                         {"Referrer-Policy", "no-referrer"}});
    set_pre_routing_handler([this](const Request& request, Response& response) {
        return isRefused(request, response) ? HandlerResponse::Handled : HandlerResponse::Unhandled;
    });
    set_error_handler([](const Request& request, Response& response) {
        if (response.body.empty()) {
            const bool isUnknown = response.status == notFound;
            refuse(response, static_cast<Status>(response.status),
                   isUnknown                     ? "there is no " + request.method + " " + request.path
                   : response.status == tooLarge ? "the body is larger than 64 KiB"
                                                 : "the request cannot be served");
        }
    });
    set_exception_handler([](const Request&, Response& response, const std::exception_ptr&) {
        refuse(response, failed, "the request cannot be served");
    });
    Get("/", [this](const Request&, Response& response) {
        response.set_content(session_.page(), "text/html; charset=utf-8");
    });
    Get("/events", [this](const Request& request, Response& response) { follow(request, response); });
    Get("/status",
        [this](const Request&, Response& response) { response.set_content(status_(), "application/json"); });
    Get("/krx/Registration", [this](const Request& request, Response& response) {
        const auto profile = session_.profile();
        if (!profile) {
            refuse(response, notFound, "the enterprise has received no profile yet");
        } else if (request.get_header_value("Accept").find("json") != std::string::npos ||
                   request.get_param_value("format") == "json") {
            response.set_content(registrationJson(*profile), "application/json");
        } else {
            response.set_content(registrationXml(*profile), "application/xml");
        }
    });
    Post("/krx/ZephanServices",
         [this](const Request& request, Response& response, const ContentReader& reader) {
             if (const auto body = bodyOf(request, reader, response)) {
                 callService(*body, response);
             }
         });
    Post(R"(/do/([a-z]+))", [this](const Request& request, Response& response, const ContentReader& reader) {
        if (const auto body = bodyOf(request, reader, response)) {
            doForm(request.matches[1], *body, response);
        }
    });
}

void Console::Server::follow(const Request& request, Response& response) {
    if (++followers_ > kMostFollowers) {
        --followers_;
        refuse(response, unavailable, "too many clients follow the events already");
        return;
    }
    response.set_content_provider(
        "text/event-stream",
        [this, next = firstWanted(request), isFirst = true](std::size_t, httplib::DataSink& sink) mutable {
            const LiveSession::News news =
                session_.wait(next, isFirst ? std::chrono::seconds(0) : kHeartbeat);
            isFirst = false;
            std::string text;
            for (const std::string& line : news.lines) {
                text += "id: " + std::to_string(next++) + "\ndata: " + line + "\n\n";
            }
            if (news.lines.empty()) {
                text = news.isOver ? "event: over\ndata: \n\n"
                                   : "event: now\ndata: " + secondsText(session_.now()) + "\n\n";
            }
            if (!sink.write(text.data(), text.size())) {
                return false;
            }
            if (news.isOver && news.lines.empty()) {
                sink.done();
            }
            return true;
        },
        [this](bool) { --followers_; });
}

std::optional<OrderQueue::Outcome> Console::Server::perform(std::vector<std::string> lines,
                                                            Response& response) {
    std::future<OrderQueue::Outcome> answer = orders_.submit(std::move(lines));
    if (answer.wait_for(kOrderTime) != std::future_status::ready) {
        refuse(response, tooLate, "the agent is busy; it will do this when it can");
        return std::nullopt;
    }
    OrderQueue::Outcome outcome = answer.get();
    if (outcome.isOver) {
        refuse(response, unavailable, "the session is over");
        return std::nullopt;
    }
    return outcome;
}

void Console::Server::callService(const std::string& body, Response& response) {
    std::string line;
    try {
        line = lineOfRequest(body);
    } catch (const std::runtime_error& error) {
        refuse(response, badRequest, error.what());
        return;
    }
    const auto outcome = perform({line}, response);
    if (!outcome) {
        return;
    }
    if (outcome->calls.size() != 1) {
        refuse(response, failed, outcome->error.empty() ? "the call was not made" : outcome->error);
        return;
    }
    const OrderQueue::Call& call = outcome->calls.front();
    if (call.stage == "service") {
        refuse(response, unavailable,
               "the agent has no such service; the module's web service is not started");
    } else if (call.stage == "create") {
        refuse(response, badRequest, call.remark);
    } else if (call.result != 0 || !call.response) {
        refuse(response, failed,
               "the operation answers " + std::to_string(call.result) + ": the device could not do it");
    } else {
        response.set_content(*call.response + "\n", "application/xml");
    }
}

void Console::Server::doForm(const std::string& name, const std::string& body, Response& response) {
    if (!isForm(name)) {
        refuse(response, notFound, "there is no form '" + name + "'");
        return;
    }
    std::vector<std::string> lines;
    try {
        lines = linesOfForm(name, body, session_.startLines());
    } catch (const std::runtime_error& error) {
        refuse(response, name == "restart" ? conflict : badRequest, error.what());
        return;
    }
    const auto outcome = perform(std::move(lines), response);
    if (!outcome) {
        return;
    }
    if (!outcome->error.empty()) {
        refuse(response, badRequest, outcome->error);
        return;
    }
    std::string json = "{\"calls\":[";
    for (const OrderQueue::Call& call : outcome->calls) {
        json += (json.back() == '[' ? "" : ",") + call.json;
    }
    response.set_content(json + "]}\n", "application/json");
}

Console::Console(const Place& place, LiveSession& session, OrderQueue& orders,
                 std::function<std::string()> status)
    : server_(std::make_unique<Server>(place, session, orders, std::move(status))) {
    const bool isAll = place.address == "0.0.0.0" || place.address == "::";
    const std::string host = isAll                                          ? "localhost"
                             : place.address.find(':') != std::string::npos ? "[" + place.address + "]"
                                                                            : place.address;
    url_ = "http://" + host + ":" + std::to_string(server_->port()) + "/";
}

Console::~Console() = default;

Console::Place parsePlace(const std::string& text) {
    const std::size_t colon = text.rfind(':');
    Console::Place place;
    if (colon != std::string::npos) {
        place.address = text.substr(0, colon);
        if (place.address.starts_with('[') && place.address.ends_with(']')) {
            place.address = place.address.substr(1, place.address.size() - 2);
        } else if (place.address.find(':') != std::string::npos) {
            place.address.clear();
        }
    }
    const auto port = parseCount(colon == std::string::npos ? text : text.substr(colon + 1), kLargestPort);
    if (!port || place.address.empty()) {
        throw std::runtime_error("'" + text + "' is no [ADDRESS:]PORT");
    }
    place.port = static_cast<int>(*port);
    return place;
}

}  // namespace sim
