// The exports of the shared library ZephanRSMLogger: RSM (forced polling on request) and the agent's file
// logger.
//
// An agent loads the library, looks the functions up by name and calls them in four families. Rules for all
// of them:
// - No exception leaves an export and no failure stops the host: failures answer -1 (or as stated) and write
// a log line
//   through the agent's own logging library.
// - Texts are 8-bit and NUL-terminated. "Null" is a null pointer.
// - "Start/stop thread" below means: any one host thread at a time; a start or stop that comes in beside
// another one
//   waits for it. All other functions may be called from any thread at any time.
// - A handle is an opaque value. It must not be used after the stop that ends the module's objects (see
// below).
//
// The families share one controller and one configuration. Who creates them: the first start that needs them.
// Who ends them: `ZPXRSMLoggerShutdown` always, `ZPRSMExtnShutdown` when the logger was never started.
#pragma once

#include <stdint.h>  // NOLINT(modernize-deprecated-headers): C hosts include this header too

#ifdef __cplusplus
namespace KRX::ServiceAgentNS {
class ServiceAgent;
}
namespace KRX::Messaging {
class WebServiceMessage;
}

namespace KRX::Services {

/// A web service object, made by `ZPXRSMWSCreateService`. The order of the virtual operations is part of the
/// binary interface. One object may serve several calls at once, on any threads. A call consists of
/// `CreateMessage`, reading the received request into the message's request object, `Execute`, writing the
/// response object, `Cleanup`.
class Service {
  public:
    /// Keeps copies of both texts; null stays null.
    Service(const char* serviceName, const char* serviceNamespace);
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    virtual ~Service();

    /// Builds the request and response objects of `operation` into `message`, which owns them from then on.
    /// 0, or -1 for an operation that the service does not have.
    virtual int8_t CreateMessage(const char* operation, Messaging::WebServiceMessage* message) = 0;
    /// Runs the operation named in the message's header. The operation's result, or -1.
    virtual int8_t Execute(Messaging::WebServiceMessage* message) = 0;
    /// Releases what the service still owns of the call; the response must not be written afterwards. 0 or
    /// -1.
    virtual int8_t Cleanup(Messaging::WebServiceMessage* message);

  protected:
    const char* serviceName() const { return serviceName_; }
    const char* serviceNamespace() const { return serviceNamespace_; }

  private:
    char* serviceName_;
    char* serviceNamespace_;
};

}  // namespace KRX::Services

using ZPServiceAgent = KRX::ServiceAgentNS::ServiceAgent;
using ZPService = KRX::Services::Service;

extern "C" {
#else
typedef struct ZPServiceAgent ZPServiceAgent;
typedef struct ZPService ZPService;
#endif

#define ZP_EXPORT __attribute__((visibility("default")))

/// One property of a command or of its answer. Every non-null field of a list that is given to
/// `ZPXRSMDSDestroyPropList` must be a character array from `new char[]`.
typedef struct Prop {
    char* name;    ///< compared as a whole, case-sensitively
    char* field2;  ///< not read by the module; null in its answers
    char* field3;  ///< not read by the module; null in its answers
    char* value;
} Prop;

/// A property list. As an argument it stays the caller's and is only read during the call. As an answer it is
/// the caller's from the moment it is stored in the response slot, to be given back with
/// `ZPXRSMDSDestroyPropList`.
typedef struct PropList {
    Prop* properties;  ///< `count` records back to back, from `new Prop[]`
    int32_t count;
} PropList;

/* ---- RSM extension
 * ------------------------------------------------------------------------------------------- */

/// Starts the RSM extension: loads the configuration unless a start did so before, keeps the service agent
/// (not owned; it must outlive the module's objects), resumes a saved RSM and picks up a stored schedule.
/// `handle`: receives the controller's handle. `initParam`: path of the XML configuration file; blanks and
/// tabs around it are removed. Start/stop thread. 0, or -1 with a log line and `*handle` unchanged.
ZP_EXPORT int8_t ZPRSMExtnStartup(void** handle, ZPServiceAgent* serviceAgent, const char* initParam);

/// Stops the RSM extension: closes the schedule file and, when the logger was never started, ends the polling
/// thread (waiting at most about 3 s for it) and all objects. Start/stop thread. 0, or -1 for a null handle.
ZP_EXPORT int8_t ZPRSMExtnShutdown(void* handle);

/* ---- Data-source extension
 * ----------------------------------------------------------------------------------- */

/// Starts the data-source extension with the path of the schedule file; the first path stays in force. Call
/// it before `ZPRSMExtnStartup` if a stored schedule is to be picked up there. Start/stop thread. 0, or -1.
ZP_EXPORT int8_t ZPXRSMDSStartup(void** handle, const char* scheduleFilePath);

/// Writes the life-cycle line; releases nothing. Any thread. Always 0.
ZP_EXPORT int8_t ZPXRSMDSShutdown(void);

/// The data source has no values. Any thread. Always 2.
ZP_EXPORT int32_t ZPXRSMDSGet(void);
ZP_EXPORT int32_t ZPXRSMDSSet(void);

/// Runs a command: "ScheduleRSM" (properties RSMStartDate, RSMStartTime, PollingRate in seconds, GracePeriod
/// in minutes) or "ExitRSM". `response` may be null; otherwise it receives a new list that the caller
/// releases with `ZPXRSMDSDestroyPropList`, or stays unchanged when there is none. Any thread. 0 done, 1
/// failed, 2 command not recognised.
ZP_EXPORT int32_t ZPXRSMDSExectue(void* reserved1, void* reserved2, const char* command,
                                  const PropList* input, PropList** response);

/// Answers are released with `ZPXRSMDSDestroyPropList` only. Any thread. Always -1.
ZP_EXPORT int8_t ZPXRSMDSDestoryResponse(void);

/// Releases a list: every non-null field, the records, the list. Any thread. Always 0.
ZP_EXPORT int8_t ZPXRSMDSDestroyPropList(void* reserved1, void* reserved2, PropList* list);

/* ---- Logger extension
 * ---------------------------------------------------------------------------------------- */

/// Starts the file logger with the path of the XML configuration file, used as it arrives. Deletes old log
/// files. Afterwards the host hands every log and audit message to the two functions below. Start/stop
/// thread. 0, or -1.
ZP_EXPORT int8_t ZPXRSMLoggerStatup(const char* initParam);

/// Ends the polling thread (waiting at most about 3 s for it), the logger and all objects, and clears the
/// agent's two log hooks. Start/stop thread. Always 0.
ZP_EXPORT int8_t ZPXRSMLoggerShutdown(void);

/// Takes one log message: written to the log file when it passes the configured level, and echoed to standard
/// output. May be re-entered on the same thread. 0, or -1 for a null message.
ZP_EXPORT int8_t ZPXRSMLoggerLog(uint8_t level, const char* message);

/// Takes one audit message: as above, and searched for the configured texts of remote activity. The call
/// returns when the modality script, if one is due, has ended. 0, or -1 for a null message.
ZP_EXPORT int8_t ZPXRSMLoggerAudit(const char* message);

/* ---- Web-service extension
 * ----------------------------------------------------------------------------------- */

/// Keeps the service agent unless one is held, and stores the controller's handle. Start/stop thread. 0, or
/// -1 for a null slot.
ZP_EXPORT int8_t ZPXRSMWSStartup(void** handle, ZPServiceAgent* serviceAgent);

/// Writes the life-cycle line; releases nothing. Any thread. 0, or -1 for a null handle.
ZP_EXPORT int8_t ZPXRSMWSShutdown(void* handle);

/// Makes a service object; the host owns it until it gives it back. `*service` is null when memory ran out.
/// Any thread. 0, or -1 when either argument is null.
ZP_EXPORT int8_t ZPXRSMWSCreateService(void* handle, ZPService** service);

/// Destroys a service object (null is accepted). Any thread. Always 0.
ZP_EXPORT int8_t ZPXRSMWSDestroyService(void* handle, ZPService* service);

#ifdef __cplusplus
}
#endif
