#include "sim/console/Console.h"

#include "session/SessionPage.h"
#include "sim/console/HttpServer.h"
#include "sim/console/LiveSession.h"
#include "sim/console/OrderForm.h"
#include "sim/console/RequestGuard.h"
#include "sim/console/ServiceText.h"
#include "sim/input/OrderQueue.h"
#include "sim/scenario/Verbs.h"
#include "sim/trace/EventFields.h"

#include <set>
#include <stdexcept>
#include <strings.h>

namespace sim {

namespace {

constexpr int kMostFollowers = 400;                        ///< of the events, who stay
constexpr std::size_t kMostNews = std::size_t{64} * 1024;  // bytes at once, and a line
constexpr std::string_view kService = "/krx/ZephanServices";
constexpr std::string_view kForms = "/do/";
const std::set<std::string> kViews = {"/", "/events", "/status", "/metrics", "/healthz", "/krx/Registration"};

Answer answerOfService(const OrderQueue::Outcome& outcome) {
    if (outcome.calls.size() != 1) {
        return refusal(MHD_HTTP_INTERNAL_SERVER_ERROR,
                       outcome.error.empty() ? "the call was not made" : outcome.error);
    }
    const Event& call = outcome.calls.front();
    const auto stage = textOf(call, "stage");
    const auto response = textOf(call, "response");
    if (stage == "service") {
        return refusal(MHD_HTTP_SERVICE_UNAVAILABLE, "the module's web service is not started");
    }
    if (stage == "create") {
        return refusal(MHD_HTTP_BAD_REQUEST, call.remark);
    }
    if (const std::int64_t result = numberOf(call, "result"); result != 0 || !response) {
        return refusal(MHD_HTTP_INTERNAL_SERVER_ERROR,
                       "the operation answers " + std::to_string(result) + ": the device could not do it");
    }
    return {MHD_HTTP_OK, "application/xml", *response + "\n"};
}

Answer answerOfForm(const OrderQueue::Outcome& outcome) {
    if (!outcome.error.empty()) {
        return refusal(MHD_HTTP_BAD_REQUEST, outcome.error);
    }
    std::string json = "{\"calls\":[";
    for (const Event& call : outcome.calls) {
        json += (json.back() == '[' ? "" : ",") + asJson(call);
        json.pop_back();  // the end of its line in the trace
    }
    return {MHD_HTTP_OK, "application/json", json + "]}\n"};
}

/// What there is to ask for; on the thread of the transport.
class Server final : public Console {
  public:
    Server(const std::string& address, int port, LiveSession& session, OrderQueue& orders,
           std::function<std::string(bool)> status)
        : session_(session),
          orders_(orders),
          status_(std::move(status)),
          address_(address),
          transport_(address, port, session.bell(),
                     {{"Cache-Control", "no-store"},
                      {"Content-Security-Policy", session::pagePolicy(true) + "; frame-ancestors 'none'"},
                      {"Cross-Origin-Resource-Policy", "same-origin"},
                      {"Referrer-Policy", "no-referrer"},
                      {"X-Content-Type-Options", "nosniff"},
                      {"X-Frame-Options", "DENY"}},
                     [this](const Request& request) { return answer(request); }) {}
    ~Server() override {
        session_.close();
        orders_.close();
    }

    std::string url() const override {
        const std::string host = address_ == "0.0.0.0" || address_ == "::" ? "localhost"
                                 : address_.find(':') != std::string::npos ? "[" + address_ + "]"
                                                                           : address_;
        return "http://" + host + ":" + std::to_string(transport_.port()) + "/";
    }

  private:
    Answer answer(const Request& request);
    Answer view(const Request& request) const;
    Answer follow(const Request& request) const;
    Answer order(const Request& request, const std::string& form);

    LiveSession& session_;
    OrderQueue& orders_;
    const std::function<std::string(bool)> status_;
    const std::string address_;
    const std::shared_ptr<int> follower_ = std::make_shared<int>();  ///< shared by all who follow the events
    HttpServer transport_;
};

Answer Server::answer(const Request& request) {
    if (auto refused = refusalOf(request, address_)) {
        return *refused;
    }
    const std::string form = request.path.starts_with(kForms) ? request.path.substr(kForms.size()) : "";
    const bool isService = request.path == kService;
    const bool isOrder = isService || isForm(form);
    if (!isOrder && !kViews.contains(request.path)) {
        return refusal(MHD_HTTP_NOT_FOUND,
                       form.empty() ? "there is no " + request.path : "there is no form '" + form + "'");
    }
    if (isOrder ? request.method != "POST" : request.method != "GET" && request.method != "HEAD") {
        return refusal(MHD_HTTP_METHOD_NOT_ALLOWED, request.path + " has no " + request.method,
                       isOrder ? "POST" : "GET, HEAD");
    }
    if (!isOrder) {
        return view(request);
    }
    // A page elsewhere sends one of these only with leave.
    std::string type = request.value(MHD_HEADER_KIND, "Content-Type").value_or("");
    type.erase(std::min(type.find(';'), type.size()));
    const auto isType = [&](const char* name) { return ::strcasecmp(type.c_str(), name) == 0; };
    if (isService ? !isType("application/xml") && !isType("text/xml") : !isType("application/json")) {
        return refusal(MHD_HTTP_UNSUPPORTED_MEDIA_TYPE,
                       std::string("the Content-Type must be ") +
                           (isService ? "application/xml or text/xml" : "application/json"));
    }
    return order(request, form);
}

Answer Server::view(const Request& request) const {
    if (request.path == "/") {
        return {MHD_HTTP_OK, "text/html; charset=utf-8", session_.page()};
    }
    if (request.path == "/events") {
        return follow(request);
    }
    if (request.path == "/status") {
        return {MHD_HTTP_OK, "application/json", status_(false)};
    }
    if (request.path == "/metrics") {
        return {MHD_HTTP_OK, "text/plain; version=0.0.4; charset=utf-8", status_(true)};
    }
    if (request.path == "/healthz") {
        return {MHD_HTTP_OK, "text/plain; charset=utf-8", "ok\n"};
    }
    const auto profile = session_.profile();
    if (!profile) {
        return refusal(MHD_HTTP_NOT_FOUND, "the enterprise has received no profile yet");
    }
    return request.value(MHD_HEADER_KIND, "Accept").value_or("").find("json") != std::string::npos ||
                   request.value(MHD_GET_ARGUMENT_KIND, "format") == "json"
               ? Answer{MHD_HTTP_OK, "application/json", registrationJson(*profile)}
               : Answer{MHD_HTTP_OK, "application/xml", registrationXml(*profile)};
}

Answer Server::follow(const Request& request) const {
    if (follower_.use_count() > kMostFollowers) {
        return refusal(MHD_HTTP_SERVICE_UNAVAILABLE, "too many clients follow the events already");
    }
    const auto last = parseCount(request.value(MHD_HEADER_KIND, "Last-Event-ID").value_or(""), ~0U);
    const auto first =
        last ? std::uint64_t{*last} + 1
             : parseCount(request.value(MHD_GET_ARGUMENT_KIND, "after").value_or(""), ~0U).value_or(0);
    Answer stream = {MHD_HTTP_OK, "text/event-stream"};
    stream.next = [this, follower = follower_, next = first, isTold = false,
                   marks = std::string()](bool isDue) mutable -> std::optional<std::string> {
        const LiveSession::News news = session_.news(next);
        next = news.first;
        std::string text;
        if (news.marks != marks) {
            marks = news.marks;
            text += "event: marks\ndata: " + marks + "\n\nevent: now\ndata: " + secondsText(session_.now()) +
                    "\n\n";
        }
        for (auto line = news.lines.begin(); line != news.lines.end() && text.size() < kMostNews; ++line) {
            text += "id: " + std::to_string(next++) + "\ndata: " + *line + "\n\n";
        }
        if (!text.empty() || isTold) {
            return text;
        }
        isTold = news.isOver;
        return isTold  ? "event: over\ndata: \n\n"
               : isDue ? std::optional("event: now\ndata: " + secondsText(session_.now()) + "\n\n")
                       : std::nullopt;
    };
    return stream;
}

Answer Server::order(const Request& request, const std::string& form) {
    std::vector<std::string> lines;
    try {
        lines = form.empty() ? std::vector<std::string>{lineOfRequest(request.body)}
                             : linesOfForm(form, request.body, session_.startLines());
    } catch (const std::runtime_error& error) {
        return refusal(form == "restart" ? MHD_HTTP_CONFLICT : MHD_HTTP_BAD_REQUEST, error.what());
    }
    Answer answer = refusal(MHD_HTTP_GATEWAY_TIMEOUT, "the agent is busy; it will do this when it can");
    answer.later = [isService = form.empty(),
                    outcome = orders_.submit(std::move(lines), session_.bell())]() -> std::optional<Answer> {
        if (outcome.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
            return std::nullopt;
        }
        return outcome.get().isOver ? refusal(MHD_HTTP_SERVICE_UNAVAILABLE, "the session is over")
               : isService          ? answerOfService(outcome.get())
                                    : answerOfForm(outcome.get());
    };
    return answer;
}

}  // namespace

std::unique_ptr<Console> openConsole(const std::string& place, LiveSession& session, OrderQueue& orders,
                                     std::function<std::string(bool)> status) {
    const std::size_t colon = place.rfind(':');
    std::string address = colon == std::string::npos ? "127.0.0.1" : place.substr(0, colon);
    if (address.starts_with('[') && address.ends_with(']')) {
        address = address.substr(1, address.size() - 2);
    } else if (address.find(':') != std::string::npos) {
        address.clear();
    }
    const auto port = parseCount(place.substr(colon + 1), 65535);  // all of it without a colon
    if (!port || address.empty()) {
        throw std::runtime_error("'" + place + "' is no [ADDRESS:]PORT");
    }
    return std::make_unique<Server>(address, static_cast<int>(*port), session, orders, std::move(status));
}

}  // namespace sim
