#include "Platform/Linux/HIDReportDescriptor.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include <fmt/format.h>

namespace tessara {
namespace {

using Error = HIDReportDescriptorError;

/// Type and tag of an item, as they stand in the upper six bits of its first byte.
enum ItemKind : std::uint8_t {
    input = 0x80,
    output = 0x90,
    collection = 0xA0,
    endCollection = 0xC0,
    usagePage = 0x04,
    reportSize = 0x74,
    reportID = 0x84,
    reportCount = 0x94,
    push = 0xA4,
    pop = 0xB4,
    usage = 0x08,
    usageMinimum = 0x18,
};

constexpr std::uint8_t kindMask = 0xFC;
constexpr std::uint8_t typeMask = 0x0C;
constexpr std::uint8_t mainType = 0x00;
constexpr std::uint8_t longItemPrefix = 0xFE;
constexpr std::uint32_t applicationCollection = 1;
constexpr std::size_t reportIDCount = 256;

struct Item {
    std::size_t offset = 0;
    std::uint8_t kind = 0;
    std::size_t size = 0;  // of the data, in bytes
    std::uint32_t data = 0;
};

/// Takes a descriptor apart into short items; long ones are reserved, and passed over.
class ItemReader {
  public:
    explicit ItemReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    /// The next item; none at the end.
    std::expected<std::optional<Item>, Error> next() {
        while (offset_ < bytes_.size() && bytes_[offset_] == longItemPrefix) {
            const auto rest = bytes_.subspan(offset_);
            constexpr std::size_t headerLength = 3;  // prefix, size of the data, tag
            const std::size_t length = headerLength + (rest.size() > 1 ? rest[1] : 0);
            if (rest.size() < length) return cutShort(length, rest.size());
            offset_ += length;
        }
        if (offset_ == bytes_.size()) return std::nullopt;

        const auto rest = bytes_.subspan(offset_);
        constexpr std::array<std::size_t, 4> sizes{0, 1, 2, 4};
        const auto size = sizes[rest[0] & 0x03U];
        if (rest.size() < 1 + size) return cutShort(1 + size, rest.size());
        Item item{
            .offset = offset_, .kind = static_cast<std::uint8_t>(rest[0] & kindMask), .size = size};
        for (std::size_t i = 0; i < size; ++i)
            item.data |= static_cast<std::uint32_t>(rest[1 + i]) << (8 * i);
        offset_ += 1 + size;
        return item;
    }

  private:
    std::unexpected<Error> cutShort(std::size_t length, std::size_t available) const {
        return std::unexpected(
            Error{offset_, fmt::format("an item of {} bytes ends after {}", length, available)});
    }

    const std::span<const std::uint8_t> bytes_;
    std::size_t offset_ = 0;
};

/// The sizes of the reports of one direction, by report id.
class ReportSizes {
  public:
    /// False, with nothing added, when the report would get too long.
    bool add(std::uint8_t id, std::uint32_t size, std::uint32_t count) {
        constexpr std::uint64_t maxBits = HIDReportDescriptor::maxReportSize * 8;
        const auto added = static_cast<std::uint64_t>(size) * count;  // 32 bits each: it fits
        if (added > maxBits || bits_[id] + added > maxBits) return false;
        bits_[id] += added;
        return true;
    }

    /// Bytes of the longest one.
    [[nodiscard]] std::int64_t longest(bool hasIDs) const {
        const auto bytes = static_cast<std::int64_t>((std::ranges::max(bits_) + 7) / 8);
        return bytes > 0 && hasIDs ? bytes + 1 : bytes;
    }

  private:
    std::array<std::uint64_t, reportIDCount> bits_{};
};

class Parser {
  public:
    std::expected<HIDReportDescriptor, Error> parse(std::span<const std::uint8_t> bytes) {
        ItemReader reader(bytes);
        for (;;) {
            const auto item = reader.next();
            if (!item) return std::unexpected(item.error());
            if (!*item) break;
            if (auto taken = take(**item); !taken) return std::unexpected(std::move(taken.error()));
        }
        if (openCollections_ > 0) {
            return failed(bytes.size(), "the descriptor ends within a collection");
        }
        result_.maxInputReportSize = inputs_.longest(result_.hasReportIDs);
        result_.maxOutputReportSize = outputs_.longest(result_.hasReportIDs);
        return std::move(result_);
    }

  private:
    /// What holds from the item that sets it until another one does.
    struct Globals {
        std::uint16_t usagePage = 0;
        std::uint32_t reportSize = 0;
        std::uint32_t reportCount = 0;
        std::uint8_t reportID = 0;
    };

    static std::unexpected<Error> failed(std::size_t offset, std::string what) {
        return std::unexpected(Error{offset, std::move(what)});
    }

    std::expected<void, Error> take(const Item& item) {
        auto taken = obey(item);
        // What is local is local to the next main item.
        if ((item.kind & typeMask) == mainType) firstUsage_.reset();
        return taken;
    }

    std::expected<void, Error> obey(const Item& item) {
        switch (item.kind) {
            case input:
                return addField(inputs_, item);
            case output:
                return addField(outputs_, item);
            case collection:
                if (item.data == applicationCollection) addApplication();
                ++openCollections_;
                return {};
            case endCollection:
                if (openCollections_ == 0) {
                    return failed(item.offset, "a collection ends that never began");
                }
                --openCollections_;
                return {};
            case usagePage:
                globals_.usagePage = static_cast<std::uint16_t>(item.data);
                return {};
            case reportSize:
                globals_.reportSize = item.data;
                return {};
            case reportCount:
                globals_.reportCount = item.data;
                return {};
            case reportID:
                return setReportID(item);
            case push:
                stack_.push_back(globals_);
                return {};
            case pop:
                if (stack_.empty()) {
                    return failed(item.offset, "a state is restored that was never saved");
                }
                globals_ = stack_.back();
                stack_.pop_back();
                return {};
            case usage:
            case usageMinimum:
                if (!firstUsage_) firstUsage_ = item;
                return {};
            default:  // features among them, whose sizes nobody asks for
                return {};
        }
    }

    std::expected<void, Error> addField(ReportSizes& sizes, const Item& item) {
        if (sizes.add(globals_.reportID, globals_.reportSize, globals_.reportCount)) return {};
        return failed(item.offset,
                      fmt::format("{} fields of {} bits make the report longer than {} bytes",
                                  globals_.reportCount, globals_.reportSize,
                                  HIDReportDescriptor::maxReportSize));
    }

    std::expected<void, Error> setReportID(const Item& item) {
        if (item.data == 0 || item.data >= reportIDCount) {
            return failed(item.offset, fmt::format("{} is no report id", item.data));
        }
        globals_.reportID = static_cast<std::uint8_t>(item.data);
        result_.hasReportIDs = true;
        return {};
    }

    /// A usage of four bytes brings its page along; a shorter one is of the page that holds at the
    /// main item.
    void addApplication() {
        HIDUsagePair pair{.usagePage = globals_.usagePage, .usage = 0};
        if (firstUsage_) {
            pair.usage = firstUsage_->data & 0xFFFFU;
            if (firstUsage_->size == 4) pair.usagePage = firstUsage_->data >> 16U;
        }
        result_.applicationCollections.push_back(pair);
    }

    HIDReportDescriptor result_;
    Globals globals_;
    std::vector<Globals> stack_;
    std::optional<Item> firstUsage_;  // of those that wait for their main item
    std::size_t openCollections_ = 0;
    ReportSizes inputs_;
    ReportSizes outputs_;
};

}  // namespace

std::string HIDReportDescriptorError::description() const {
    return fmt::format("byte {} of the report descriptor: {}", offset, what);
}

std::expected<HIDReportDescriptor, HIDReportDescriptorError> HIDReportDescriptor::parse(
    std::span<const std::uint8_t> bytes) {
    return Parser().parse(bytes);
}

}  // namespace tessara
