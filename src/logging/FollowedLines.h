// The lines by which others follow RSM in a log, as `KRXLog` takes them. They are an interface.
#pragma once

namespace lines {

/// Of a family, by its name.
inline constexpr char kStarted[] = "Custom HVK Extension: %s startup complete.\n";
inline constexpr char kStopped[] = "Custom HVK Extension: %s shutdown complete.\n";
inline constexpr char kRsm[] = "RSM Extension";
inline constexpr char kDataSource[] = "RSM DataSource Extension";
inline constexpr char kLogger[] = "RSM Logger Extension";
inline constexpr char kWebService[] = "RSM WebService Extension";
/// The first of an agent that was started, before what its start reports.
inline constexpr char kServiceAgent[] = "\n *** Setting Service Agent pointer in ZephanRSMSingleTon *** \n";

inline constexpr char kPollingRate[] = " Polling Rate = %d seconds \n";
inline constexpr char kPollingDuration[] = " Polling Duration = %d min \n";
inline constexpr char kScheduling[] = "\n SCHEDULING RSM FOR %s";
inline constexpr char kDisconnecting[] = "Disconnect : Going to exit force polling after next poll. \n";
inline constexpr char kPoll[] = "\nZephan Agent is Force Polling  ...";
inline constexpr char kReportFailed[] = "\n Failed to Update Properties...... \n";
/// The first and the last of those that tell a report which the enterprise took, one a property.
inline constexpr char kReportBegins[] = " RSM_MODE = %s \n";
inline constexpr char kReportEnds[] = " RSM_DELAY_PROFILE_GRACE_PERIOD = %s \n";

}  // namespace lines
