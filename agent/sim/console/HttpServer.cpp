#include "sim/console/HttpServer.h"

#include "sim/input/Bell.h"
#include "sim/scenario/Verbs.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <netdb.h>
#include <stdexcept>
#include <utility>

#include <poll.h>
#include <sys/socket.h>

namespace sim {

namespace {

using std::chrono::steady_clock;

constexpr std::size_t kLargestHead = std::size_t{32} * 1024;  // bytes
constexpr std::size_t kLargestBody = std::size_t{64} * 1024;
/// How much is read of a larger body: a connection that is closed with something unread takes the answer with it.
constexpr unsigned int kMostDropped = 1U << 20U;
constexpr unsigned int kMostClients = 600;
constexpr std::ptrdiff_t kMostAsking = 100;  // of the clients, those whose request is not there yet
constexpr unsigned int kPatience = 10;       // seconds, with a request and with a client that takes nothing
constexpr std::chrono::seconds kOrderTime(30);
constexpr std::chrono::seconds kHeartbeat(5);
constexpr std::chrono::milliseconds kFarewell(500);
constexpr int kTick = 100;  // milliseconds

const Answer kTooLarge = refusal(MHD_HTTP_CONTENT_TOO_LARGE, "the body is larger than 64 KiB");

}  // namespace

struct HttpServer::Client {
    HttpServer& server;
    Request request;
    steady_clock::time_point due = steady_clock::now() + std::chrono::seconds(kPatience);
    std::size_t received = 0;           ///< of the body, bytes
    std::optional<Answer> answer = {};  ///< from the request's end on
    std::size_t taken = 0;              ///< of the answer's present text
    bool waits = false;                 ///< suspended, until the bell rings or something is due

    MHD_Result end() {
        if (!answer) {
            answer = received > kLargestBody ? kTooLarge : server.handler_(request);
            due = steady_clock::now() + kOrderTime;
        }
        if (answer->later) {
            if (auto better = answer->later()) {
                return send(std::move(*better));
            }
            if (steady_clock::now() < due) {
                waits = true;
                MHD_suspend_connection(request.connection);
                return MHD_YES;
            }
        }
        return send(std::move(*answer));
    }

    MHD_Result send(Answer given) {
        answer = std::move(given);
        due = steady_clock::now();
        MHD_Response* const response =
            answer->next ? MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, 4096, &read, this, nullptr)
                         : MHD_create_response_from_buffer(answer->body.size(), answer->body.data(),
                                                           MHD_RESPMEM_PERSISTENT);
        if (!answer->allowed.empty()) {
            MHD_add_response_header(response, MHD_HTTP_HEADER_ALLOW, answer->allowed.c_str());
        }
        MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, answer->type.c_str());
        MHD_add_response_header(response, MHD_HTTP_HEADER_CONNECTION, "close");
        for (const auto& [name, value] : server.headers_) {
            MHD_add_response_header(response, name.c_str(), value.c_str());
        }
        const MHD_Result queued = MHD_queue_response(request.connection, answer->status, response);
        MHD_destroy_response(response);
        return queued;
    }

    // What the library calls, on the server's thread.

    static ssize_t read(void* client, std::uint64_t /*position*/, char* target, std::size_t size) {
        auto& self = *static_cast<Client*>(client);
        std::string& text = self.answer->body;
        if (self.taken == text.size()) {
            const auto next = self.answer->next(steady_clock::now() >= self.due);
            self.taken = 0;
            text = next.value_or("");
            if (!next) {
                self.waits = true;
                MHD_suspend_connection(self.request.connection);
                return 0;
            }
            if (text.empty()) {
                return MHD_CONTENT_READER_END_OF_STREAM;
            }
            self.due = steady_clock::now() + kHeartbeat;
        }
        const std::size_t given = text.copy(target, size, self.taken);
        self.taken += given;
        return static_cast<ssize_t>(given);
    }

    static void connect(void* server, MHD_Connection* connection, void** context,
                        MHD_ConnectionNotificationCode code) {
        auto& self = *static_cast<HttpServer*>(server);
        if (code == MHD_CONNECTION_NOTIFY_STARTED) {
            *context = &self.clients_.emplace_back(Client{self, {connection, self.port()}});
        } else {
            self.clients_.remove_if([&](const Client& client) { return &client == *context; });
        }
    }

    /// Called with the request's head, each part of its body, its end, and after each wait.
    static MHD_Result handle(void* /*server*/, MHD_Connection* connection, const char* path,
                             const char* method, const char* /*version*/, const char* data, std::size_t* size,
                             void** known) {
        auto& client = *static_cast<Client*>(
            MHD_get_connection_info(connection, MHD_CONNECTION_INFO_SOCKET_CONTEXT)->socket_context);
        try {
            if (std::exchange(*known, &client) == nullptr) {
                client.request.path = path;
                client.request.method = method;
                const auto length = client.request.value(MHD_HEADER_KIND, "Content-Length").value_or("0");
                return parseCount(length, kMostDropped) ? MHD_YES : client.send(kTooLarge);
            }
            if (*size == 0) {
                return client.end();
            }
            client.received += *size;
            if (client.received <= kLargestBody) {
                client.request.body.append(data, *size);
            }
            *size = 0;
            return client.received <= kMostDropped ? MHD_YES : MHD_NO;
        } catch (const std::exception&) {
            return client.send(refusal(MHD_HTTP_INTERNAL_SERVER_ERROR, "the request cannot be served"));
        }
    }
};

HttpServer::HttpServer(const std::string& address, int port, Bell& bell,
                       std::map<std::string, std::string> headers, Handler handler)
    : bell_(bell), headers_(std::move(headers)), handler_(std::move(handler)) {
    const addrinfo wanted = {
        AI_PASSIVE | AI_NUMERICSERV, AF_UNSPEC, SOCK_STREAM, 0, 0, nullptr, nullptr, nullptr};
    addrinfo* found = nullptr;
    const std::string service = std::to_string(port);
    std::string reason = "no such address";
    if (::getaddrinfo(address.c_str(), service.c_str(), &wanted, &found) == 0) {
        const int listener = ::socket(found->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        const int yes = 1;
        ::setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        if (::bind(listener, found->ai_addr, found->ai_addrlen) == 0 && ::listen(listener, SOMAXCONN) == 0) {
            daemon_ =
                MHD_start_daemon(MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_SUPPRESS_DATE_NO_CLOCK, 0,
                                 nullptr, nullptr, &Client::handle, this, MHD_OPTION_LISTEN_SOCKET, listener,
                                 MHD_OPTION_NOTIFY_CONNECTION, &Client::connect, this,
                                 MHD_OPTION_CONNECTION_LIMIT, kMostClients, MHD_OPTION_CONNECTION_TIMEOUT,
                                 kPatience, MHD_OPTION_CONNECTION_MEMORY_LIMIT, kLargestHead, MHD_OPTION_END);
        }
        reason = std::strerror(errno);
        ::freeaddrinfo(found);
    }
    if (daemon_ == nullptr) {
        throw std::runtime_error(address + ":" + service + ": cannot listen: " + reason);
    }
    thread_ = std::thread(&HttpServer::run, this);
}

HttpServer::~HttpServer() {
    isOver_ = true;
    bell_.ring();
    thread_.join();
}

void HttpServer::run() {
    std::array<pollfd, 2> watched = {
        {{MHD_get_daemon_info(daemon_, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd, POLLIN, 0},
         {bell_.descriptor(), POLLIN, 0}}};
    const auto isServed = [](const Client& client) { return client.answer.has_value(); };
    auto end = steady_clock::time_point::max();
    while (steady_clock::now() < end &&
           (!isOver_ || std::any_of(clients_.begin(), clients_.end(), isServed))) {
        MHD_UNSIGNED_LONG_LONG limit = kTick;
        const bool isBounded = MHD_get_timeout(daemon_, &limit) == MHD_YES || !clients_.empty();
        limit = std::min<MHD_UNSIGNED_LONG_LONG>(limit, kTick);
        ::poll(watched.data(), watched.size(), isBounded ? static_cast<int>(limit) : -1);
        bell_.answer();
        if (isOver_) {
            end = std::min(end, steady_clock::now() + kFarewell);
        }
        lookAtClients(watched[1].revents != 0);
        MHD_run(daemon_);
    }
    lookAtClients(true);
    MHD_stop_daemon(daemon_);
}

void HttpServer::lookAtClients(bool isRung) {
    auto asking =
        std::count_if(clients_.begin(), clients_.end(), [](const Client& client) { return !client.answer; });
    for (Client& client : clients_) {
        MHD_Connection* const connection = client.request.connection;
        const bool isDue = steady_clock::now() >= client.due;
        if (client.waits && (isRung || isDue)) {
            client.waits = false;
            MHD_resume_connection(connection);
        } else if (!client.answer && (isDue || asking-- > kMostAsking)) {
            ::shutdown(MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd,
                       SHUT_RDWR);
        }
    }
}

std::optional<std::string> Request::value(MHD_ValueKind kind, const char* name) const {
    const char* const found = MHD_lookup_connection_value(connection, kind, name);
    return found == nullptr ? std::nullopt : std::optional<std::string>(found);
}

Answer refusal(unsigned int status, const std::string& reason, const std::string& allowed) {
    return {status, "text/plain; charset=utf-8", reason + "\n", allowed};
}

}  // namespace sim
