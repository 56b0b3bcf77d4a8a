#pragma once

namespace KRX::Services {

/// The texts that the messages of one service share. Keeps copies; null stays null.
class ServiceMessages {
  public:
    ServiceMessages(const char* serviceName, const char* requestUri, const char* serviceNamespace);
    ServiceMessages(const ServiceMessages&) = delete;
    ServiceMessages& operator=(const ServiceMessages&) = delete;
    virtual ~ServiceMessages();

  protected:
    const char* serviceName() const { return serviceName_; }
    const char* requestUri() const { return requestUri_; }
    const char* serviceNamespace() const { return serviceNamespace_; }

  private:
    char* serviceName_ = nullptr;
    char* requestUri_ = nullptr;
    char* serviceNamespace_ = nullptr;
};

}  // namespace KRX::Services
