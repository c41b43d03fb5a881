#pragma once

#include <bit>
#include <concepts>
#include <functional>
#include <initializer_list>

namespace tessara {

/// A set of flags in an unsigned integer, with the algebra of sets. `Self` is the class that
/// derives from it and names its members as constants.
///
/// Bits without a name are kept as they are, so that a number from a document survives being read
/// and written again. Use a set where several members may hold at once; for one of several use an
/// enumeration.
template <typename Self, std::unsigned_integral Raw>
class OptionSet {
  public:
    using RawValue = Raw;

    /// The empty set.
    constexpr OptionSet() = default;
    /// The set with these bits, whether or not they have names.
    constexpr explicit OptionSet(Raw rawValue) : rawValue_(rawValue) {}
    /// The union of `members`.
    constexpr OptionSet(std::initializer_list<Self> members) {
        for (const Self& member : members)
            rawValue_ = raw(rawValue_ | member.rawValue());
    }

    /// The bits of the set, its stored form.
    [[nodiscard]] constexpr Raw rawValue() const { return rawValue_; }

    [[nodiscard]] constexpr bool isEmpty() const { return rawValue_ == 0; }
    /// How many bits are set, nameless ones too.
    [[nodiscard]] constexpr int count() const { return std::popcount(rawValue_); }
    /// Whether every member of `other` is in this set. The empty set is in every set.
    [[nodiscard]] constexpr bool contains(Self other) const { return other.isSubset(self()); }
    /// Whether every member of this set is in `other`.
    [[nodiscard]] constexpr bool isSubset(Self other) const {
        return (rawValue_ & other.rawValue()) == rawValue_;
    }
    /// Whether the sets have no member in common.
    [[nodiscard]] constexpr bool isDisjoint(Self other) const {
        return (rawValue_ & other.rawValue()) == 0;
    }

    /// Adds and takes away all members of another set, present or not.
    constexpr void insert(Self members) { rawValue_ = (self() | members).rawValue(); }
    constexpr void remove(Self members) { rawValue_ = (self() - members).rawValue(); }

    /// Union, intersection, symmetric difference and subtraction.
    [[nodiscard]] friend constexpr Self operator|(Self a, Self b) {
        return Self(raw(a.rawValue() | b.rawValue()));
    }
    [[nodiscard]] friend constexpr Self operator&(Self a, Self b) {
        return Self(raw(a.rawValue() & b.rawValue()));
    }
    [[nodiscard]] friend constexpr Self operator^(Self a, Self b) {
        return Self(raw(a.rawValue() ^ b.rawValue()));
    }
    [[nodiscard]] friend constexpr Self operator-(Self a, Self b) {
        return Self(raw(a.rawValue() & ~b.rawValue()));
    }

    friend constexpr bool operator==(const OptionSet&, const OptionSet&) = default;

  private:
    /// Back to the width of the set from the `int` that arithmetic on narrow integers yields.
    template <std::integral Wide>
    static constexpr Raw raw(Wide bits) {
        return static_cast<Raw>(bits);
    }
    constexpr const Self& self() const { return static_cast<const Self&>(*this); }

    Raw rawValue_ = 0;
};

template <typename T>
concept IsOptionSet = std::derived_from<T, OptionSet<T, typename T::RawValue>>;

}  // namespace tessara

template <tessara::IsOptionSet T>
struct std::hash<T> {
    std::size_t operator()(const T& value) const noexcept {
        return std::hash<typename T::RawValue>{}(value.rawValue());
    }
};
