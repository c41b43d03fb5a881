#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "TessaraCore/DeviceID.h"
#include "TessaraCore/JSON.h"
#include "TessaraCore/JSONDocument.h"
#include "TessaraCore/JSONWriter.h"
#include "TessaraCore/OptionSet.h"
#include "TessaraCore/RawValue.h"

/// How a type gets a stored form. Include it in the one source file that defines the forms, not to
/// decode or encode: JSON.h does for that.
///
/// A structure names its fields, once for both directions. A tagged union names its cases in the
/// order of the variant; each case is a structure with stored fields of its own, none for a case
/// without a payload:
///
///     template <>
///     inline constexpr auto storedFields<Rule> =
///         std::tuple(StoredField{"id", &Rule::id}, StoredField{"priority", &Rule::priority});
///
///     template <>
///     inline constexpr auto storedCases<Action> = std::to_array<std::string_view>({"passThrough",
///     "hold"});
///
///     TESSARA_DEFINE_STORED_FORM(Rule)
///
/// Booleans, integers, doubles, strings, vectors, enumerations with raw values, option sets and
/// optional fields have a form already.
namespace tessara {

/// One field of a structure and the key it is stored under.
template <typename Structure, typename Member>
struct StoredField {
    std::string_view key;
    Member Structure::* member;
};

/// The fields of a structure, a std::tuple of StoredField.
template <typename T>
inline constexpr std::nullptr_t storedFields = nullptr;

/// The cases of a variant by name, in the order of its alternatives.
template <typename T>
inline constexpr std::array<std::string_view, 0> storedCases{};

namespace json {

template <typename T>
concept HasFields = !std::same_as<std::remove_cvref_t<decltype(storedFields<T>)>, std::nullptr_t>;
template <typename T>
concept HasCases = !storedCases<T>.empty();

template <typename T>
inline constexpr bool isOptional = false;
template <typename T>
inline constexpr bool isOptional<std::optional<T>> = true;

template <typename T>
inline constexpr bool isVector = false;
template <typename T>
inline constexpr bool isVector<std::vector<T>> = true;

/// The way from the outermost value to the one at hand. The links lie on the stack and become text
/// only when there is an error to report.
struct Path {
    const Path* parent = nullptr;
    std::string_view key = {};
    std::size_t index = 0;  // of an element, when there is no key

    [[nodiscard]] Path member(std::string_view name) const { return {this, name, 0}; }
    [[nodiscard]] Path element(std::size_t position) const { return {this, {}, position}; }
    [[nodiscard]] std::string description() const;
};

/// Leaves a decoding or encoding; caught at its boundary and never seen outside.
struct Failure {
    std::string path;
    std::string reason;
};

[[noreturn]] void fail(const Path& path, std::string reason);
/// "expected `expected`, found ..."
[[noreturn]] void failExpecting(const Path& path, std::string_view expected, JSONValue found);
[[noreturn]] void failMissing(const Path& path);
[[noreturn]] void failDuplicate(const Path& path);
[[noreturn]] void failUnknownName(const Path& path, std::string_view found,
                                  std::span<const std::string_view> names);
[[noreturn]] void failNumberOfKeys(const Path& path);

bool decodeBoolean(JSONValue value, const Path& path);
double decodeNumber(JSONValue value, const Path& path);
std::string decodeString(JSONValue value, const Path& path);
/// Both limits included.
std::int64_t decodeSigned(JSONValue value, const Path& path, std::int64_t least,
                          std::int64_t greatest);
std::uint64_t decodeUnsigned(JSONValue value, const Path& path, std::uint64_t greatest);

template <typename T>
void decode(JSONValue value, const Path& path, T& result);

template <typename T>
void decodeFields(JSONValue value, const Path& path, T& result) {
    if (!value.isObject()) failExpecting(path, "an object", value);
    constexpr auto& fields = storedFields<T>;
    constexpr std::size_t count = std::tuple_size_v<std::remove_cvref_t<decltype(fields)>>;
    std::array<bool, count> seen{};

    const auto decodeMember = [&](JSONValue member, std::size_t i, const auto& field) {
        if (member.key() != field.key) return false;
        const Path memberPath = path.member(field.key);
        if (std::exchange(seen[i], true)) failDuplicate(memberPath);
        decode(member, memberPath, result.*field.member);
        return true;
    };
    const auto requireMember = [&](std::size_t i, const auto& field) {
        using Member = std::remove_cvref_t<decltype(result.*field.member)>;
        if (!isOptional<Member> && !seen[i]) failMissing(path.member(field.key));
    };
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        for ([[maybe_unused]] const JSONValue member : value.children()) {
            static_cast<void>((decodeMember(member, I, std::get<I>(fields)) || ...));
        }
        (requireMember(I, std::get<I>(fields)), ...);
    }(std::make_index_sequence<count>{});
}

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
        if (value.isNull()) return result.reset();
        decode(value, path, result.emplace());
    } else if constexpr (isVector<T>) {
        if (!value.isArray()) failExpecting(path, "an array", value);
        for (const JSONValue element : value.children()) {
            const Path elementPath = path.element(result.size());
            decode(element, elementPath, result.emplace_back());
        }
    } else if constexpr (RawRepresentable<T>) {
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

/// The positions of `keys` in the order of the alphabet.
template <std::size_t N>
constexpr std::array<std::size_t, N> sortedOrder(const std::array<std::string_view, N>& keys) {
    std::array<std::size_t, N> order{};
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::sort(order, {}, [&](std::size_t i) { return keys[i]; });
    return order;
}

void encodeNumber(JSONWriter& writer, const Path& path, double value);
void encodeString(JSONWriter& writer, const Path& path, std::string_view value);

template <typename T>
void encode(JSONWriter& writer, const Path& path, const T& value);

template <typename T>
void encodeFields(JSONWriter& writer, const Path& path, const T& value) {
    constexpr auto& fields = storedFields<T>;
    constexpr std::size_t count = std::tuple_size_v<std::remove_cvref_t<decltype(fields)>>;
    constexpr auto order = std::apply(
        [](const auto&... field) {
            return sortedOrder(std::array<std::string_view, count>{field.key...});
        },
        fields);

    const auto encodeMember = [&](const auto& field) {
        const auto& member = value.*field.member;
        if constexpr (isOptional<std::remove_cvref_t<decltype(member)>>) {
            if (!member) return;
        }
        writer.key(field.key);
        encode(writer, path.member(field.key), member);
    };
    writer.beginObject();
    [&]<std::size_t... I>(std::index_sequence<I...>) {
        (encodeMember(std::get<order[I]>(fields)), ...);
    }(std::make_index_sequence<count>{});
    writer.endObject();
}

template <typename T>
void encode(JSONWriter& writer, const Path& path, const T& value) {
    if constexpr (HasFields<T>) {
        encodeFields(writer, path, value);
    } else if constexpr (HasCases<T>) {
        const std::string_view name = storedCases<T>[value.index()];
        writer.beginObject();
        writer.key(name);
        std::visit([&](const auto& payload) { encode(writer, path.member(name), payload); }, value);
        writer.endObject();
    } else if constexpr (isOptional<T>) {
        encode(writer, path, *value);
    } else if constexpr (isVector<T>) {
        writer.beginArray();
        std::size_t index = 0;
        for (const auto& element : value)
            encode(writer, path.element(index++), element);
        writer.endArray();
    } else if constexpr (RawRepresentable<T>) {
        encodeString(writer, path, rawValue(value));
    } else if constexpr (IsOptionSet<T>) {
        writer.unsignedInteger(value.rawValue());
    } else if constexpr (std::same_as<T, DeviceID>) {
        writer.unsignedInteger(value.rawValue);
    } else if constexpr (std::same_as<T, bool>) {
        writer.boolean(value);
    } else if constexpr (std::signed_integral<T>) {
        writer.signedInteger(value);
    } else if constexpr (std::unsigned_integral<T>) {
        writer.unsignedInteger(value);
    } else if constexpr (std::same_as<T, double>) {
        encodeNumber(writer, path, value);
    } else {
        static_assert(std::same_as<T, std::string>, "the type has no stored form");
        encodeString(writer, path, value);
    }
}

/// Decodes a document that is parsed already.
template <typename T>
std::expected<T, DecodingError> decodeDocument(const JSONDocument& document) {
    try {
        T result;
        decode(document.root(), Path{}, result);
        return result;
    } catch (Failure& failure) {
        return std::unexpected(DecodingError{std::move(failure.path), std::move(failure.reason)});
    }
}

}  // namespace json

template <typename T>
std::expected<T, JSONError> decodeJSON(std::string_view text) {
    const auto document = JSONDocument::parse(text);
    if (!document) return std::unexpected(document.error());
    auto result = json::decodeDocument<T>(*document);
    if (!result) return std::unexpected(std::move(result.error()));
    return *std::move(result);
}

template <typename T>
std::expected<std::string, EncodingError> encodeJSON(const T& value) {
    try {
        JSONWriter writer;
        json::encode(writer, json::Path{}, value);
        return std::move(writer).take();
    } catch (json::Failure& failure) {
        return std::unexpected(EncodingError{std::move(failure.path), std::move(failure.reason)});
    }
}

}  // namespace tessara

/// Makes `decodeJSON<T>` and `encodeJSON<T>` available to every other source file. Use it inside
/// the namespace, after the form of `T` and of all that `T` holds.
#define TESSARA_DEFINE_STORED_FORM(T)                                     \
    template std::expected<T, JSONError> decodeJSON<T>(std::string_view); \
    template std::expected<std::string, EncodingError> encodeJSON<T>(const T&);
