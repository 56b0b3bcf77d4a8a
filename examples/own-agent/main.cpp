// A device's host on the minimal agent: one connect, polled to its end.
#include "Agent.h"
#include "ZephanRSMLogger.h"
#include "platform/agent/Messaging.h"

#include <chrono>
#include <cstdio>
#include <thread>

int main(int argc, char** argv) {
    void* rsm = nullptr;
    void* webService = nullptr;
    ZPService* service = nullptr;
    if (argc != 2 || ZPRSMExtnStartup(&rsm, &device::serviceAgent(), argv[1]) != 0 ||
        ZPXRSMWSStartup(&webService, &device::serviceAgent()) != 0 ||
        ZPXRSMWSCreateService(webService, &service) != 0) {
        std::puts("cannot start");
        return 1;
    }
    int result = -1;
    {
        KRX::Messaging::WebServiceMessage call;
        service->CreateMessage("connect", &call);
        call.GetRequestMsg()->SetSubElementText("pollDuration", "2");
        call.GetRequestMsg()->SetSubElementText("pollingRate", "30");
        result = service->Execute(&call);
        service->Cleanup(&call);
    }
    ZPXRSMWSDestroyService(webService, service);
    // It is reported when it begins and when it ends.
    const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (device::reports < 2 && std::chrono::steady_clock::now() < patience) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    ZPXRSMWSShutdown(webService);
    ZPRSMExtnShutdown(rsm);
    std::printf("connect: %d, %d polls\n", result, device::polls.load());
    return 0;
}
