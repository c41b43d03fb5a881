#pragma once

#include <cstdint>
#include <string>

namespace tessara {

/// What a link has counted since it was made: for a page of facts and for tests, and nothing that
/// the client itself goes by. Reports that are too short or carry another report id appear in none
/// of the counters.
struct HIDPPTransportStatistics {
    /// Requests handed to be written, those included whose write then failed.
    std::int64_t requestsSent = 0;
    /// Replies, error replies included, that were given to their request.
    std::int64_t repliesMatched = 0;
    /// Replies to requests that already had an outcome.
    std::int64_t staleRepliesDropped = 0;
    /// Reports that no request asked for and that are no notification.
    std::int64_t unmatchedReportsDropped = 0;
    /// Notifications, counted whether or not anyone listened.
    std::int64_t notificationsDelivered = 0;
    /// The most requests that waited at one time, the one on the wire included.
    std::int64_t peakQueueDepth = 0;

    /// All counters in one line.
    std::string description() const;

    bool operator==(const HIDPPTransportStatistics&) const = default;
};

}  // namespace tessara
