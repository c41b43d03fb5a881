#pragma once

#include <QByteArray>
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tessara {

/// The bytes of a text in Base64, if it is one and they are just as many as wanted.
template <std::size_t size>
std::optional<std::array<std::uint8_t, size>> fixedBase64(std::string_view text) {
    const auto result =
        QByteArray::fromBase64Encoding(QByteArray(text.data(), static_cast<qsizetype>(text.size())),
                                       QByteArray::AbortOnBase64DecodingErrors);
    std::array<std::uint8_t, size> bytes{};
    if (!result || result.decoded.size() != qsizetype{size}) return std::nullopt;
    std::ranges::transform(result.decoded, bytes.begin(),
                           [](char byte) { return static_cast<std::uint8_t>(byte); });
    return bytes;
}

}  // namespace tessara
