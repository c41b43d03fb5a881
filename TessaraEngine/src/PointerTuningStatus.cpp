#include "TessaraEngine/PointerTuningStatus.h"

#include <charconv>

#include <fmt/format.h>

#include "HIDPlusPlus/HIDPPDeviceMatch.h"
#include "TessaraCore/JSONCoding.h"

namespace tessara {

/// The capture as its file has it.
struct StoredPointerTuningCapture {
    std::int64_t schema = 0;
    PointerServiceIdentity service;
    std::string accelerationKey;
    std::optional<std::int64_t> resolution;
    std::optional<std::int64_t> acceleration;
    std::string capturedAt;
};

template <>
inline constexpr auto storedFields<PointerServiceIdentity> =
    std::tuple(StoredField{"registryID", &PointerServiceIdentity::registryID},
               StoredField{"vendorID", &PointerServiceIdentity::vendorID},
               StoredField{"productID", &PointerServiceIdentity::productID},
               StoredField{"product", &PointerServiceIdentity::product},
               StoredField{"primaryUsagePage", &PointerServiceIdentity::primaryUsagePage},
               StoredField{"primaryUsage", &PointerServiceIdentity::primaryUsage});
template <>
inline constexpr auto storedFields<StoredPointerTuningCapture> =
    std::tuple(StoredField{"schema", &StoredPointerTuningCapture::schema},
               StoredField{"service", &StoredPointerTuningCapture::service},
               StoredField{"accelerationKey", &StoredPointerTuningCapture::accelerationKey},
               StoredField{"resolution", &StoredPointerTuningCapture::resolution},
               StoredField{"acceleration", &StoredPointerTuningCapture::acceleration},
               StoredField{"capturedAt", &StoredPointerTuningCapture::capturedAt});

namespace {

/// 1.0 in 16.16 fixed point.
constexpr double fixedOne = 65536;

std::optional<double> fromFixed(std::optional<std::int64_t> value) {
    return value ? std::optional(static_cast<double>(*value) / fixedOne) : std::nullopt;
}

std::string idText(const std::optional<std::int64_t>& id) {
    return id ? fmt::format("0x{:04X}", *id) : "?";
}

std::string isoText(std::chrono::sys_seconds moment) {
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(moment - day);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                       static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                       time.hours().count(), time.minutes().count(), time.seconds().count());
}

/// The digits of `text` from `start` on, as a number.
std::optional<int> digits(std::string_view text, std::size_t start, std::size_t count) {
    const char* const first = text.data() + start;
    int value = 0;
    const auto [end, error] = std::from_chars(first, first + count, value);
    if (error != std::errc() || end != first + count || value < 0) return std::nullopt;
    return value;
}

/// `yyyy-MM-ddTHH:mm:ssZ` only: the one form that is written.
std::optional<std::chrono::sys_seconds> fromISOText(std::string_view text) {
    constexpr std::string_view shape = "0000-00-00T00:00:00Z";
    if (text.size() != shape.size()) return std::nullopt;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] != '0' && text[i] != shape[i]) return std::nullopt;
    }
    const auto year = digits(text, 0, 4);
    const auto month = digits(text, 5, 2);
    const auto day = digits(text, 8, 2);
    const auto hour = digits(text, 11, 2);
    const auto minute = digits(text, 14, 2);
    const auto second = digits(text, 17, 2);
    if (!year || !month || !day || !hour || !minute || !second) return std::nullopt;
    const std::chrono::year_month_day date(std::chrono::year(*year),
                                           std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day)));
    if (!date.ok() || *hour > 23 || *minute > 59 || *second > 60) return std::nullopt;
    return std::chrono::sys_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute) +
           std::chrono::seconds(*second);
}

}  // namespace

TESSARA_DEFINE_STORED_FORM(StoredPointerTuningCapture)

bool PointerServiceIdentity::isPointerCollection() const {
    return primaryUsagePage == 1 && primaryUsage == 2;
}

bool PointerServiceIdentity::matches(const HIDPPDeviceMatch& match) const {
    return vendorID == match.vendorID && productID == match.productID;
}

std::string PointerServiceIdentity::label() const {
    return fmt::format("{} [{}:{}] usage {}/{} registry 0x{:x}", product.value_or("(unnamed)"),
                       idText(vendorID), idText(productID), primaryUsagePage.value_or(-1),
                       primaryUsage.value_or(-1), registryID);
}

std::optional<double> PointerTuningCapture::resolutionCPI() const {
    return fromFixed(resolution);
}

std::optional<double> PointerTuningCapture::accelerationValue() const {
    return fromFixed(acceleration);
}

std::expected<std::string, EncodingError> PointerTuningCapture::encoded() const {
    return encodeJSON(StoredPointerTuningCapture{.schema = schema,
                                                 .service = service,
                                                 .accelerationKey = accelerationKey,
                                                 .resolution = resolution,
                                                 .acceleration = acceleration,
                                                 .capturedAt = isoText(capturedAt)});
}

std::optional<PointerTuningCapture> PointerTuningCapture::decoded(std::string_view bytes) {
    const auto stored = decodeJSON<StoredPointerTuningCapture>(bytes);
    if (!stored || stored->schema != currentSchema) return std::nullopt;
    const auto capturedAt = fromISOText(stored->capturedAt);
    if (!capturedAt) return std::nullopt;
    return PointerTuningCapture{.schema = stored->schema,
                                .service = stored->service,
                                .accelerationKey = stored->accelerationKey,
                                .resolution = stored->resolution,
                                .acceleration = stored->acceleration,
                                .capturedAt = *capturedAt};
}

std::optional<double> PointerTuningStatus::capturedResolutionCPI() const {
    return capture ? capture->resolutionCPI() : std::nullopt;
}

std::optional<double> PointerTuningStatus::appliedResolutionCPI() const {
    return fromFixed(appliedResolution);
}

std::optional<double> PointerTuningStatus::overestimateFactor() const {
    const auto applied = appliedResolutionCPI();
    const auto captured = capturedResolutionCPI();
    if (!applied || !captured || *captured <= 0) return std::nullopt;
    return *applied / *captured;
}

}  // namespace tessara
