#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <numeric>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>

#include "TessaraCore/DeviceID.h"
#include "TessaraCore/JSONWriter.h"
#include "TessaraCore/OptionSet.h"
#include "TessaraCore/RawValue.h"
#include "TessaraCore/StoredForm.h"

/// From a value to its text, along its stored form. Not to be called by itself: see JSON.h.
///
/// Every function throws `Failure` where a value has no form in JSON; `encodeJSON` makes a value of
/// it. `path` is where in the text the value will stand. What `writer` holds by then is of no use.
namespace tessara::json {

/// The positions of `keys` in the order of the alphabet, which is that of their bytes: capital
/// letters come first.
template <std::size_t N>
constexpr std::array<std::size_t, N> sortedOrder(const std::array<std::string_view, N>& keys) {
    std::array<std::size_t, N> order{};
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::sort(order, {}, [&](std::size_t i) { return keys[i]; });
    return order;
}

// What can fail, compiled once: a number that is not finite, a text that is not UTF-8.

void encodeNumber(JSONWriter& writer, const Path& path, double value);
void encodeString(JSONWriter& writer, const Path& path, std::string_view value);

/// Writes `value`. What it writes is chosen by the type: see StoredForm.h.
template <typename T>
void encode(JSONWriter& writer, const Path& path, const T& value);

/// A structure: its fields in the order of the alphabet, which is found when this is compiled. An
/// absent optional field leaves its key out.
template <typename T>
void encodeFields(JSONWriter& writer, const Path& path, const T& value) {
    constexpr auto& fields = storedFields<T>;
    constexpr std::size_t count = std::tuple_size_v<std::remove_cvref_t<decltype(fields)>>;
    // The order is found once, by the compiler, and costs nothing at each encoding.
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
        // A tagged union: one key, the name of the case.
        const std::string_view name = storedCases<T>[value.index()];
        writer.beginObject();
        writer.key(name);
        std::visit([&](const auto& payload) { encode(writer, path.member(name), payload); }, value);
        writer.endObject();
    } else if constexpr (isOptional<T>) {
        // An empty one has been left out by `encodeFields`.
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

}  // namespace tessara::json
