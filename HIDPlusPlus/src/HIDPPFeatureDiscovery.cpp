#include <algorithm>

#include "HIDPPConnection.h"
#include "HIDPlusPlus/HIDPPWire.h"

// The first traffic on a new connection: what the mouse is, what it can do, and under which index.

namespace tessara {

HIDPPTask<HIDPPProtocolVersion> HIDPPConnection::ping() {
    Bytes parameters{0, 0, HIDPPReplies::pingToken};
    const auto reply =
        co_await request(HIDPPWire::rootFeatureIndex, 1, std::move(parameters), false);
    if (!reply) co_return std::unexpected(reply.error());
    const auto version = HIDPPReplies::protocolVersion(*reply);
    if (version) cachedProtocolVersion_ = *version;
    co_return version;
}

HIDPPTask<HIDPPProtocolVersion> HIDPPConnection::protocolVersion() {
    if (cachedProtocolVersion_) co_return *cachedProtocolVersion_;
    co_return co_await ping();
}

HIDPPTask<std::uint8_t> HIDPPConnection::featureIndex(HIDPPFeature feature) {
    if (feature == HIDPPFeature::root) co_return HIDPPWire::rootFeatureIndex;
    const auto id = featureID(feature);
    if (const auto known = featuresByID_.find(id); known != featuresByID_.end()) {
        co_return known->second.index;
    }
    if (fullTableDiscovered_ || absentFeatureIDs_.contains(id)) {
        absentFeatureIDs_.insert(id);
        co_return std::unexpected(HIDPPError::FeatureUnsupported{feature});
    }
    Bytes parameters{HIDPPWire::highByte(id), HIDPPWire::lowByte(id), 0};
    const auto reply =
        co_await request(HIDPPWire::rootFeatureIndex, 0, std::move(parameters), false);
    if (!reply) co_return std::unexpected(reply.error());
    auto record = HIDPPReplies::featureLookup(*reply);
    if (!record) co_return std::unexpected(record.error());
    if (record->index == 0) {
        absentFeatureIDs_.insert(id);
        co_return std::unexpected(HIDPPError::FeatureUnsupported{feature});
    }
    record->id = id;
    record->feature = feature;
    featuresByID_[id] = *record;
    co_return record->index;
}

HIDPPTask<std::vector<HIDPPFeatureRecord>> HIDPPConnection::discoverFeatures() {
    const auto featureSet = co_await featureIndex(HIDPPFeature::featureSet);
    if (!featureSet) co_return std::unexpected(featureSet.error());
    const auto countReply = co_await request(*featureSet, 0, Bytes(), false);
    if (!countReply) co_return std::unexpected(countReply.error());
    const auto count = HIDPPReplies::featureCount(*countReply);
    if (!count) co_return std::unexpected(count.error());

    std::vector<HIDPPFeatureRecord> table;
    // The count leaves out the root feature, which is row 0.
    for (int row = 0; row <= *count; ++row) {
        const auto index = static_cast<std::uint8_t>(row);
        Bytes parameters{index, 0, 0};
        const auto reply = co_await request(*featureSet, 1, std::move(parameters), false);
        if (!reply) co_return std::unexpected(reply.error());
        auto record = HIDPPReplies::featureTableRow(*reply);
        if (!record) co_return std::unexpected(record.error());
        record->index = index;
        featuresByID_[record->id] = *record;
        table.push_back(*record);
    }
    fullTableDiscovered_ = true;
    absentFeatureIDs_.clear();
    co_return table;
}

std::vector<HIDPPFeatureRecord> HIDPPConnection::features() const {
    std::vector<HIDPPFeatureRecord> records;
    for (const auto& [id, record] : featuresByID_)
        records.push_back(record);
    std::ranges::sort(records, {}, &HIDPPFeatureRecord::index);
    return records;
}

HIDPPTask<HIDPPDeviceInformation> HIDPPConnection::deviceInformation() {
    return read(HIDPPFeature::deviceInformation, 0, {}, true, HIDPPReplies::deviceInformation);
}

HIDPPTask<std::string> HIDPPConnection::deviceName() {
    const auto length =
        co_await read(HIDPPFeature::deviceNameType, 0, Bytes(), false, HIDPPReplies::nameLength);
    if (!length) co_return std::unexpected(length.error());
    Bytes name;
    while (name.size() < *length) {
        Bytes offset{static_cast<std::uint8_t>(name.size())};
        const auto chunk = co_await get(HIDPPFeature::deviceNameType, 1, std::move(offset), true);
        if (!chunk) co_return std::unexpected(chunk.error());
        if (chunk->empty()) break;
        name.insert(name.end(), chunk->begin(), chunk->end());
    }
    co_return HIDPPReplies::deviceName(name, *length);
}

}  // namespace tessara
