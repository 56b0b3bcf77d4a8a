// The web service object of ZephanRSMLogger.h, for hosts in C++17 or later. A host calls it with
// the messages of the agent's own messaging library; a host in C hands it on to code that can.
#ifndef ZEPHAN_RSM_SERVICE_H
#define ZEPHAN_RSM_SERVICE_H

#include <cstdint>

namespace KRX::Messaging {
class WebServiceMessage;
}

namespace KRX::Services {

/// A web service object, made by `ZPXRSMWSCreateService` and given back with
/// `ZPXRSMWSDestroyService`. The order of the virtual operations is part of the binary interface.
///
/// A call consists of `CreateMessage`, reading the received request into the message's request
/// object, `Execute`, writing the response from the response object, `Cleanup`; each answers -1
/// without a message. One object may serve several calls at once, each with a message of its own,
/// on any threads; all data of a call are in its message. The object keeps nothing of the module
/// alive and outlives its stops: a call finds what runs then.
class Service {
  public:
    /// Keeps copies of both texts; null stays null.
    Service(const char* serviceName, const char* serviceNamespace);
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    virtual ~Service();

    /// Builds the request and response objects of `operation` into `message`, which owns them from
    /// then on. 0, or -1 with a log line for an operation that the service does not have.
    /// [any thread]
    virtual std::int8_t CreateMessage(const char* operation, Messaging::WebServiceMessage* message) = 0;
    /// Runs the operation named in the message's header. A "connect" while RSM runs waits for the
    /// enterprise's answer to its report, unless another thread reports. The operation's result (see
    /// the table in ZephanRSMLogger.h); -1 for another operation, or for a message without its objects.
    /// [any thread; after this message's CreateMessage]
    virtual std::int8_t Execute(Messaging::WebServiceMessage* message) = 0;
    /// Releases what the service still owns of the call; the response must not be written
    /// afterwards. 0 or -1.
    /// [any thread; after this message's Execute]
    virtual std::int8_t Cleanup(Messaging::WebServiceMessage* message);

  protected:
    const char* serviceName() const { return serviceName_; }
    const char* serviceNamespace() const { return serviceNamespace_; }

  private:
    char* serviceName_;
    char* serviceNamespace_;
};

}  // namespace KRX::Services

#endif
