// The shared library ZephanRSMLogger: RSM (forced polling on request) and the agent's file logger.
// This header compiles as C99 and as C++17 or later.
//
// An agent loads the library, looks the functions below up by their names and calls them in four
// families: RSM, data source, logger and web service. All families share one controller, which runs
// RSM, and one configuration.
//
// Rules for all functions:
// - No exception leaves a function and no failure stops the host: a failure answers -1 (or as
//   stated) and writes a log line through the agent's own logging library.
// - Texts are 8-bit and NUL-terminated. "Null" is a null pointer. A handle is an opaque value.
//   The texts of the configuration are in UTF-8 once read; messages are searched byte by byte.
// - Brackets hold the threads that may call a function and, after a semicolon, when. "[any thread]":
//   also during a start or a stop. "[start-stop]": any thread of the host; a start or stop that
//   overlaps another one may wait for it. A call at another time does less, but no harm, except
//   where it says "not while".
// - Names are part of the binary interface, spelled as they are here:
//   `ZPXRSMDSExectue`, `ZPXRSMDSDestoryResponse` and `ZPXRSMLoggerStatup` are intended.
//
//
// ---- Order --------------------------------------------------------------------------------------
//
// Start:  1. ZPXRSMDSStartup     before RSM, which picks up the schedule that the data source has stored
//         2. ZPXRSMLoggerStatup  when it answers 0, the host sets the log hooks of the agent's library:
//                                KRXLogSetFunc(ZPXRSMLoggerLog), KRXLogSetAuditFunc(ZPXRSMLoggerAudit)
//         3. ZPRSMExtnStartup    resumes an RSM that was cut off; starts or awaits a scheduled one
//         4. ZPXRSMWSStartup, ZPXRSMWSCreateService
// Stop:   1. ZPXRSMWSDestroyService, ZPXRSMWSShutdown: these may also come later, before 4
//         2. ZPRSMExtnShutdown   before the logger: deletes a schedule file that is no longer needed
//         3. ZPXRSMDSShutdown
//         4. ZPXRSMLoggerShutdown, which ends everything and clears both log hooks
//
// A family that is not used may be left out. Without the logger ZPRSMExtnShutdown ends everything.
//
//
// ---- What ends what, and what must be started again ---------------------------------------------
//
//   this stop               ends                                   to get it back afterwards
//   ----------------------  -------------------------------------  ---------------------------------
//   ZPXRSMLoggerShutdown    RSM, the polling thread, the log file, start all families, in the order
//                           the schedule (its file stays), the     above. The logger alone is a trap:
//                           service agent held, the configuration, "connect" then answers 0, and
//                           both log hooks                         nothing polls
//   ZPRSMExtnShutdown,      the same, but for the hooks            likewise
//     logger never started
//   ZPRSMExtnShutdown,      the schedule file: closed, and deleted RSM polls on. Orders are carried
//     logger started        when nothing is scheduled              out, but not stored any more, until
//                                                                  all was stopped and started again
//   ZPXRSMDSShutdown,       nothing
//     ZPXRSMWSShutdown
//   ZPXRSMWSDestroyService  that service object                    ZPXRSMWSCreateService
//   kill, loss of power,    everything; a running or scheduled     start all families: RSM goes on
//     end of the process    RSM is in the state files
//
// A handle holds until the stop that ends everything; a service object longer, until it is
// destroyed: its calls find what runs then. "Started" means: since the last such stop.
//
//
// ---- A start that fails -------------------------------------------------------------------------
//
// A start that answers -1 leaves unchanged whatever ran before. When the configuration file could not
// be read, there is a configuration nevertheless, with the values that earlier loads read or else the
// defaults, and with the path of the first load:
// - ZPXRSMLoggerStatup, called again, reads that file again, whatever path it is given; before,
//   nothing of the logger was attached.
// - ZPRSMExtnStartup, called after such a failure, of its own or of the logger's, finds a configuration
//   and answers 0 with the defaults: no resume file, no script.
// - For another path, or RSM with the settings of the file: ZPXRSMLoggerShutdown, then all starts.
//
//
// ---- When what happens --------------------------------------------------------------------------
//
// - The first poll comes one whole interval after the order has been reported, up to 5 seconds later
//   while a schedule waits. An order while RSM runs takes effect at the end of the interval under way,
//   with a poll that counts for neither order: "connect 10 30" at 0 s and "connect 5 60" at 95 s poll
//   at 120 s, and then at 180 s and four times more.
// - An order has no upper bound: a connect for 2147483647 minutes is accepted. One that comes to no
//   poll (0 minutes, a rate below 1 or above 60 seconds) is accepted, too, reported, and over at once
//   unless remote activity goes on.
// - Remote activity keeps RSM polling. Its end is followed by as many minutes of polling as the order
//   asked for, or as were left when RSM was resumed.
// - A disconnect or "ExitRSM" takes effect after one more poll, that is within one interval.
// - The stop that ends RSM takes three seconds, during which polls go on. To stop quickly, disconnect,
//   wait for one interval, and stop then. While a schedule waits, that stop always takes them.
// - A disconnect and a stop leave the resume file alone: a start within the ordered period resumes RSM,
//   for the whole minutes that are left. With less than one left RSM is reported, and over at once.
// - KRXLogSetFunc and KRXLogSetAuditFunc are the agent's own; platform/agent/Logging.h declares them as
//   the module sees them.
//
//
// ---- What the module calls ----------------------------------------------------------------------
//
//   what                             on which thread                   for how long
//   -------------------------------  --------------------------------  ------------------------------
//   the agent's log (KRXLog)         all that call in, "Data Polling"
//   sending the RSM profile          one at a time: "Data Polling"; an until the enterprise answers; no
//     to the enterprise              order while RSM runs;             poll is made in the meantime
//                                    ZPRSMExtnStartup; the audit       when "Data Polling" sends.
//                                    message that begins activity.     Without that thread an order
//                                    A second one leaves its change    also reports what changes
//                                    to the first and goes on          while it sends
//   ForcePoll of asset 0             "Data Polling"                    until it returns
//   the agent's thread functions     orders, starts and stops;         a stop waits at most 3 seconds
//                                    KRXThreadSleep: "Data Polling"
//   the modality script              the audit message that begins     until the script ends; until
//                                    activity                          then no end of remote activity
//                                                                      is acted on
//   standard output                  log and audit messages            one thread waits while nobody
//                                                                      reads a full pipe
//
// "Data Polling" is the module's only thread, there while RSM runs or awaits its start. Log lines
// of the module come back through the log hook into ZPXRSMLoggerLog on the same thread.
//
// Locks of the host:
// - A start, a stop, "connect", "disconnect" or a command is not called under a lock that another
//   thread may need in the agent's log, in sending to the enterprise, in ForcePoll or in the thread
//   functions.
// - ZPXRSMLoggerAudit is not called under a lock that sending to the enterprise needs.
// - The agent's log may hold a recursive lock while it calls its hook, ZPXRSMLoggerLog.
// Functions of the agent may throw: that counts as their failure.
//
// The host calls no start and no stop from within a function that the module has called.
//
//
// ---- End of threads and processes ---------------------------------------------------------------
//
// - A host thread may end, or be unwound, within a call of the module.
// - A stop does not wait for host threads that are still in the module; they finish with what they
//   hold. The library must not be unloaded before all of them have left it, all service objects are
//   destroyed and the thread "Data Polling" has ended: a stop that logs "FORCEFULLY" has left that
//   to the agent's KRXThreadDestroy.
// - A child of fork() calls nothing here; it may exec or end. A daemon forks before its first start.
// - A signal handler calls nothing here.
#ifndef ZEPHAN_RSM_LOGGER_H
#define ZEPHAN_RSM_LOGGER_H

#include <stdint.h>  // NOLINT(modernize-deprecated-headers): C hosts include this header too

/* The version of this header; the build reads its own from here. */
#define ZEPHAN_RSM_LOGGER_VERSION_MAJOR 1
#define ZEPHAN_RSM_LOGGER_VERSION_MINOR 2
#define ZEPHAN_RSM_LOGGER_VERSION_PATCH 0

/* Defined before this header where a system exports by other means. */
#ifndef ZP_EXPORT
#define ZP_EXPORT __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
namespace KRX {
namespace ServiceAgentNS {
class ServiceAgent;
}
namespace Services {
class Service;
}
}  // namespace KRX

using ZPServiceAgent = KRX::ServiceAgentNS::ServiceAgent;
using ZPService = KRX::Services::Service;

extern "C" {
#else
typedef struct ZPServiceAgent ZPServiceAgent;
typedef struct ZPService ZPService;
#endif

/// The level scale of log messages. The configured "LogLevel" lets itself and all above it into the
/// log file; "audit" lets nothing in. Without a "LogLevel" only ZP_LEVEL_FORCE passes. Audit messages pass
/// where ZP_LEVEL_INFO does, and so do messages of a level that is none of these.
enum {
    ZP_LEVEL_TRACE = 20,
    ZP_LEVEL_INFO = 30,
    ZP_LEVEL_WARN = 40,
    ZP_LEVEL_ERROR = 50,
    ZP_LEVEL_FORCE = 250,
    ZP_LEVEL_AUDIT = 254
};

/// One property of a command or of its answer. Every non-null field of a list that is given to
/// `ZPXRSMDSDestroyPropList` must be a character array from `new char[]`.
typedef struct Prop {
    char* name;    ///< compared as a whole, case-sensitively
    char* field2;  ///< not read by the module; null in its answers
    char* field3;  ///< not read by the module; null in its answers
    char* value;
} Prop;

/// A property list. As an argument it stays the caller's and is only read during the call. As
/// an answer it is the caller's from the moment it is stored in the response slot, to be given
/// back with `ZPXRSMDSDestroyPropList`.
typedef struct PropList {
    Prop* properties;  ///< `count` records back to back, from `new Prop[]`
    int32_t count;
} PropList;

// ---- RSM extension ------------------------------------------------------------------------------

/// Starts the RSM extension: loads the configuration unless a start did so before, keeps the
/// service agent (not owned; it must outlive the module's objects) unless one is held, resumes a
/// saved RSM and picks up a stored schedule; either may take as long as the enterprise takes to
/// answer. A null service agent is not kept; without one nothing is polled or reported. `handle`: may
/// be null; receives the controller's handle. `initParam`: path of the XML configuration file; blanks
/// and tabs around it are removed; not looked at when the configuration is loaded already. 0, or -1
/// with `*handle` unchanged.
/// [start-stop; after ZPXRSMDSStartup and ZPXRSMLoggerStatup where those are used]
ZP_EXPORT int8_t ZPRSMExtnStartup(void** handle, ZPServiceAgent* serviceAgent, const char* initParam);

/// Stops the RSM extension: closes the schedule file and, when the logger was never started, ends
/// the polling thread (waiting at most about 3 s for it) and all objects. 0, or -1 for a null handle.
/// [start-stop; before ZPXRSMDSShutdown and ZPXRSMLoggerShutdown]
ZP_EXPORT int8_t ZPRSMExtnShutdown(void* handle);

// ---- Data-source extension ----------------------------------------------------------------------

/// Starts the data-source extension with the path of the schedule file; the first path stays in force.
/// The file is created when it is missing; when it cannot be, a line at the next order says so.
/// `handle`: may be null; receives a handle that no function needs. 0, or -1 with `*handle` unchanged.
/// [start-stop; before ZPRSMExtnStartup]
ZP_EXPORT int8_t ZPXRSMDSStartup(void** handle, const char* scheduleFilePath);

/// Writes the life-cycle line; releases nothing. Always 0.
/// [any thread; after ZPRSMExtnShutdown]
ZP_EXPORT int8_t ZPXRSMDSShutdown(void);

/// The data source has no values. Always 2.
/// [any thread]
ZP_EXPORT int32_t ZPXRSMDSGet(void);
ZP_EXPORT int32_t ZPXRSMDSSet(void);

/// Runs a command. `input` may be null: no properties. `response` may be null; otherwise it receives
/// a new list that the caller releases with `ZPXRSMDSDestroyPropList`, null when the command was
/// carried out and there was no memory for its answer, and stays unchanged when there is none. 0 done,
/// 1 failed, 2 command not recognised.
/// [any thread; after ZPXRSMDSStartup: until then every command answers 1, an unknown one too]
///
/// "ScheduleRSM" orders RSM, now or later. An order for later replaces one that still waits. An order for
/// now, or a "connect", leaves that waiting; but the schedule file holds the last ScheduleRSM alone, so
/// after an order for now a restart has forgotten what waited. Nothing cancels an order that waits. The
/// properties:
///
///   name          value                                      when absent
///   RSMStartDate  GMT date, "2026:03:02", or "immediate"     "immediate"
///   RSMStartTime  GMT time, "09:00:00", or "immediate"       "immediate"
///   PollingRate   seconds from one poll to the next, >= 1    "60"
///   GracePeriod   minutes of polling, >= 1                   "30"
///
/// RSM starts at once when either of the first two is "immediate", or when the start has passed: then
/// for the whole minutes that are left. An order runs once; a night is a GracePeriod of 480. Other
/// names are ignored, so a misspelt one counts as absent. Of a date and a time only length and numbers
/// are checked: any separators do, and "2030:02:30" is 2 March, though the answer repeats the text. Of
/// a number the leading digits count; values have at most 99 characters. A period has as many polls as
/// fit whole into each of its minutes: with a rate above 60 none, unless remote activity goes on. When
/// it answers 0, the order is on the disk, or a line at ZP_LEVEL_FORCE has said that it could not be
/// written. The answer is one of
///
///   0  CommandResult "Pass", RSMStartDate, RSMStartTime ("09:00:00 GMT"), PollingRate, GracePeriod
///   1  CommandResult "Failed"; for each rejected property, in the order above, its name with the reason
///   1  CommandResult "Failed"; RSMStartDate with the reason: the whole period has passed
///   1  none: the data source was not started, or memory ran out
///
/// "ExitRSM" ends RSM after its next poll. Remote activity that begins before that poll keeps RSM
/// polling until it ends. Its answer is one property, CommandResult:
///
///   0  "Thread exited successfully."       RSM ends after one more poll, as above
///   0  "Agent is in activity mode."        remote activity goes on, and so does RSM
///   1  "Agent is not in RSM."              RSM is off, or ends already
///
/// In place of the last one a "disconnect" answers one of the following, and so does "ExitRSM" when RSM ends
/// at that very moment:
///
///   0  "Agent is not in force poll mode."  RSM is off, or ends already
///   0  "There is no active thread."        RSM is off, and nothing was ordered since the start
ZP_EXPORT int32_t ZPXRSMDSExectue(void* reserved1, void* reserved2, const char* command,
                                  const PropList* input, PropList** response);

/// Answers are released with `ZPXRSMDSDestroyPropList` only. Always -1.
/// [any thread]
ZP_EXPORT int8_t ZPXRSMDSDestoryResponse(void);

/// Releases a list: every non-null field, the records, the list (null is accepted). Always 0.
/// [any thread]
ZP_EXPORT int8_t ZPXRSMDSDestroyPropList(void* reserved1, void* reserved2, PropList* list);

// ---- Logger extension ---------------------------------------------------------------------------

/// Starts the file logger with the path of the XML configuration file, used as it arrives. Deletes
/// old log files. Afterwards the host hands every log and audit message to the two functions below.
/// 0, or -1; 0 also when the log file cannot be opened: without its directory, which is not made,
/// nothing is written until the next start.
/// [start-stop; before ZPRSMExtnStartup]
ZP_EXPORT int8_t ZPXRSMLoggerStatup(const char* initParam);

/// Ends the polling thread (waiting at most about 3 s for it), the logger and all objects, and
/// clears the agent's two log hooks. Always 0.
/// [start-stop; after all other stops]
ZP_EXPORT int8_t ZPXRSMLoggerShutdown(void);

/// Takes one log message: written to the log file when it passes the configured level, and echoed
/// to standard output. The text is copied. May be re-entered on the same thread. 0, or -1 for null.
/// [any thread; while the logger is not started it only echoes]
ZP_EXPORT int8_t ZPXRSMLoggerLog(uint8_t level, const char* message);

/// Takes one audit message: as above, and searched for the configured texts of remote activity. The
/// call that begins an activity returns when the enterprise has been told, by this thread or by one
/// that is already reporting, and the modality script has ended; audit messages of other threads do
/// not wait for that. 0, or -1 for a null message.
/// [any thread; while the logger is not started it only echoes, and a line says when there is no
/// configuration]
ZP_EXPORT int8_t ZPXRSMLoggerAudit(const char* message);

// ---- Web-service extension ----------------------------------------------------------------------

/// Keeps the service agent unless one is held, as `ZPRSMExtnStartup`, and stores the controller's
/// handle; `*handle` stays unchanged when memory ran out. 0, or -1 for a null slot.
/// [start-stop]
ZP_EXPORT int8_t ZPXRSMWSStartup(void** handle, ZPServiceAgent* serviceAgent);

/// Writes the life-cycle line; releases nothing. 0, or -1 for a null handle.
/// [any thread]
ZP_EXPORT int8_t ZPXRSMWSShutdown(void* handle);

/// Makes a service object, a C++ object (ZephanRSMService.h) that the host owns until it gives it
/// back. `*service` is null when memory ran out. 0, or -1 when either argument is null.
/// [any thread; after ZPXRSMWSStartup, which gives the handle]
///
/// The service "ZephanServices" has the namespace
/// "urn:corvane-krx:urn:corvane-krx:ZephanServices_v1_0" and two operations:
///
///   operation   request                             response
///   connect     connect: pollDuration (minutes),    connectResponse: currentPollingRate, the asset's own
///               pollingRate (seconds)               poll interval in seconds; -1 without an asset
///   disconnect  disconnect: memberName (not read)   disconnectResponse: DisconnectResult, the outcome in
///                                                   the words of "ExitRSM" above
///
/// Numbers are decimal and are not checked; an absent one, or a text without leading digits, counts
/// as 0. "connect" starts RSM or, while it runs, starts it afresh with the new values, and answers
/// 0, or -1 when no thread could be started. "disconnect" answers 0. Either answers -1 without memory.
ZP_EXPORT int8_t ZPXRSMWSCreateService(void* handle, ZPService** service);

/// Destroys a service object (null is accepted). Always 0.
/// [any thread; not while one of the object's calls runs]
ZP_EXPORT int8_t ZPXRSMWSDestroyService(void* handle, ZPService* service);

#ifdef __cplusplus
}

#include "ZephanRSMService.h"
#endif

#endif
