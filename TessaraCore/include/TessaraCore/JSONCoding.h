#pragma once

#include <expected>
#include <string>
#include <string_view>
#include <utility>

#include "TessaraCore/JSON.h"
#include "TessaraCore/JSONDecoder.h"
#include "TessaraCore/JSONDocument.h"
#include "TessaraCore/JSONEncoder.h"
#include "TessaraCore/JSONWriter.h"
#include "TessaraCore/StoredForm.h"

/// The definitions behind JSON.h. Include this in the one source file that gives types their stored
/// forms (StoredForm.h), and name each of them there:
///
///     TESSARA_DEFINE_STORED_FORM(Rule)
///
/// All other files include JSON.h, and compile none of this. A type that is not named there does
/// not link where it is decoded or encoded.
namespace tessara {

// Both are described in JSON.h. Failures travel as exceptions between these two functions and the
// value at fault, and nowhere else.

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
