#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>

#include "TessaraCore/DeviceID.h"
#include "TessaraCore/JSONDocument.h"
#include "TessaraCore/JSONError.h"
#include "TessaraCore/OptionSet.h"
#include "TessaraCore/RawValue.h"
#include "TessaraCore/StoredForm.h"

/// From a parsed text to a value, along its stored form. Not to be called by itself: see JSON.h.
///
/// Every function throws `Failure` where the text is not what the form asks for; `decodeDocument`
/// makes a value of it. `path` is where in the text the value stands. What has been read into a
/// result by then is lost with it, so that there is no half-decoded value to be seen.
namespace tessara::json {

/// "expected an object, found the number 3.5": `expected` says the first with its article.
[[noreturn]] void failExpecting(const Path& path, std::string_view expected, JSONValue found);
/// A required key that is not there, and a known one that is there twice. `path` leads to the key's
/// value.
[[noreturn]] void failMissing(const Path& path);
[[noreturn]] void failDuplicate(const Path& path);
/// A string that is none of the `names` of its enumeration.
[[noreturn]] void failUnknownName(const Path& path, std::string_view found,
                                  std::span<const std::string_view> names);
/// An object for a tagged union with none or several of its known keys.
[[noreturn]] void failNumberOfKeys(const Path& path);

// The plain values, compiled once. Each fails on every other kind of value, null included.

bool decodeBoolean(JSONValue value, const Path& path);
double decodeNumber(JSONValue value, const Path& path);
std::string decodeString(JSONValue value, const Path& path);
/// A number without a fraction between the limits, both included.
std::int64_t decodeSigned(JSONValue value, const Path& path, std::int64_t least,
                          std::int64_t greatest);
std::uint64_t decodeUnsigned(JSONValue value, const Path& path, std::uint64_t greatest);

/// Reads `value` into `result`, which is freshly made. What it does is chosen by the type: see
/// StoredForm.h.
template <typename T>
void decode(JSONValue value, const Path& path, T& result);

/// A structure: each of its fields once, in any order, and unknown members passed over, however
/// often they are there. Fields are looked for one by one, which for the few of a structure is the
/// fastest.
template <typename T>
void decodeFields(JSONValue value, const Path& path, T& result) {
    if (!value.isObject()) failExpecting(path, "an object", value);
    constexpr auto& fields = storedFields<T>;
    constexpr std::size_t count = std::tuple_size_v<std::remove_cvref_t<decltype(fields)>>;
    std::array<bool, count> seen{};

    // Whether `field`, the i-th, is the one of `member`; reads it if so.
    const auto decodeMember = [&](JSONValue member, std::size_t i, const auto& field) {
        if (member.key() != field.key) return false;
        const Path memberPath = path.member(field.key);
        if (std::exchange(seen[i], true)) failDuplicate(memberPath);
        decode(member, memberPath, result.*field.member);
        return true;
    };
    // An optional field that is not there stays as it was made: empty.
    const auto requireMember = [&](std::size_t i, const auto& field) {
        using Member = std::remove_cvref_t<decltype(result.*field.member)>;
        if (!isOptional<Member> && !seen[i]) failMissing(path.member(field.key));
    };
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        for ([[maybe_unused]] const JSONValue member : value.children()) {
            // Ends at the first field that takes the member; one that none takes is unknown.
            static_cast<void>((decodeMember(member, I, std::get<I>(fields)) || ...));
        }
        (requireMember(I, std::get<I>(fields)), ...);
    }(std::make_index_sequence<count>{});
}

/// A tagged union: the one known member says which case it is, and its value is the payload,
/// decoded as the structure that the case is. Unknown members do not count.
template <typename T>
void decodeCases(JSONValue value, const Path& path, T& result) {
    if (!value.isObject()) failExpecting(path, "an object", value);
    std::optional<JSONValue> payload;
    std::size_t chosen = 0;
    for (const JSONValue member : value.children()) {
        const auto name = std::ranges::find(storedCases<T>, member.key());
        if (name == storedCases<T>.end()) continue;
        if (payload) failNumberOfKeys(path);
        payload = member;
        chosen = static_cast<std::size_t>(name - storedCases<T>.begin());
    }
    if (!payload) failNumberOfKeys(path);

    // Which case it is becomes known when this runs, its type has to be known when it is compiled:
    // so each index is tried, and the one that was chosen reads the payload.
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        static_cast<void>(((I == chosen && (decode(*payload, path.member(storedCases<T>[I]),
                                                   result.template emplace<I>()),
                                            true)) ||
                           ...));
    }(std::make_index_sequence<storedCases<T>.size()>{});
}

template <typename T>
void decode(JSONValue value, const Path& path, T& result) {
    if constexpr (HasFields<T>) {
        decodeFields(value, path, result);
    } else if constexpr (HasCases<T>) {
        static_assert(storedCases<T>.size() == std::variant_size_v<T>);
        decodeCases(value, path, result);
    } else if constexpr (isOptional<T>) {
        // Null is as good as absence.
        if (value.isNull()) return result.reset();
        decode(value, path, result.emplace());
    } else if constexpr (isVector<T>) {
        if (!value.isArray()) failExpecting(path, "an array", value);
        for (const JSONValue element : value.children()) {
            const Path elementPath = path.element(result.size());
            decode(element, elementPath, result.emplace_back());
        }
    } else if constexpr (RawRepresentable<T>) {
        // An enumeration goes by the name of the enumerator.
        const std::optional<std::string_view> name = value.string();
        if (!name) failExpecting(path, "a string", value);
        const std::optional<T> known = fromRawValue<T>(*name);
        if (!known) failUnknownName(path, *name, rawValues<T>);
        result = *known;
    } else if constexpr (IsOptionSet<T>) {
        typename T::RawValue bits = 0;
        decode(value, path, bits);
        result = T(bits);
    } else if constexpr (std::same_as<T, DeviceID>) {
        decode(value, path, result.rawValue);
    } else if constexpr (std::same_as<T, bool>) {
        result = decodeBoolean(value, path);
    } else if constexpr (std::signed_integral<T>) {
        using Limits = std::numeric_limits<T>;
        result = static_cast<T>(decodeSigned(value, path, Limits::min(), Limits::max()));
    } else if constexpr (std::unsigned_integral<T>) {
        result = static_cast<T>(decodeUnsigned(value, path, std::numeric_limits<T>::max()));
    } else if constexpr (std::same_as<T, double>) {
        result = decodeNumber(value, path);
    } else {
        static_assert(std::same_as<T, std::string>, "the type has no stored form");
        result = decodeString(value, path);
    }
}

/// Decodes a document that is parsed already, for who has to look at it in other ways too. This is
/// where failures become values. What the result holds no longer needs the document.
template <typename T>
std::expected<T, DecodingError> decodeDocument(const JSONDocument& document) {
    try {
        T result{};
        decode(document.root(), Path{}, result);
        return result;
    } catch (Failure& failure) {
        return std::unexpected(DecodingError{std::move(failure.path), std::move(failure.reason)});
    }
}

}  // namespace tessara::json
