#pragma once

namespace tessara {

/// One callable made of several, for std::visit:
///
///     std::visit(Overloaded{[](const Cat&) { ... }, [](const Dog&) { ... }}, animal);
///
/// It has no catch-all: an alternative that is added to a variant and forgotten at a visit does not
/// compile. Add one, `[](const auto&) {}`, only where later alternatives surely do not matter.
template <typename... Callables>
struct Overloaded : Callables... {
    using Callables::operator()...;
};

}  // namespace tessara
