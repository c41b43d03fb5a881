#pragma once

#include <expected>

#include <asio/awaitable.hpp>

#include "HIDPlusPlus/HIDPPError.h"

namespace tessara {

/// What an operation of the client gives: a value, or the reason why there is none.
template <typename T>
using HIDPPResult = std::expected<T, HIDPPError>;

/// An operation of the client that may have to wait for the device. It does nothing until it is
/// awaited.
template <typename T>
using HIDPPTask = asio::awaitable<HIDPPResult<T>>;

}  // namespace tessara
