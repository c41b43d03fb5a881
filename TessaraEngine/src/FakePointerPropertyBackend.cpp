#include "TessaraEngine/FakePointerPropertyBackend.h"

namespace tessara {
namespace {

template <typename Value>
std::optional<Value> find(const std::map<std::uint64_t, std::map<std::string, Value>>& properties,
                          const std::string& key, std::uint64_t registryID) {
    const auto service = properties.find(registryID);
    if (service == properties.end()) return std::nullopt;
    const auto entry = service->second.find(key);
    if (entry == service->second.end()) return std::nullopt;
    return entry->second;
}

}  // namespace

std::optional<std::int64_t> FakePointerPropertyBackend::readNumber(const std::string& key,
                                                                   std::uint64_t registryID) {
    return find(values, key, registryID);
}

std::optional<std::string> FakePointerPropertyBackend::readString(const std::string& key,
                                                                  std::uint64_t registryID) {
    return find(strings, key, registryID);
}

PointerPropertyWrite FakePointerPropertyBackend::writeNumber(const std::string& key,
                                                             std::int64_t value,
                                                             std::uint64_t registryID) {
    if (!isWritable || keysRefusedEverywhere.contains(key)) return PointerPropertyWrite::refused;
    values[registryID][key] = value;
    writeLog.push_back({registryID, key, value});
    return keysRefusedByEventSystem.contains(key) ? PointerPropertyWrite::registryEntry
                                                  : PointerPropertyWrite::eventSystem;
}

}  // namespace tessara
