#pragma once

namespace tessara {

/// One callable made of several, for std::visit. It has no catch-all: an alternative that is added
/// to a variant and forgotten at a visit does not compile.
template <typename... Callables>
struct Overloaded : Callables... {
    using Callables::operator()...;
};

}  // namespace tessara
