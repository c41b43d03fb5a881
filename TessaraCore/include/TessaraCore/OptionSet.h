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
///
///     class Toppings : public OptionSet<Toppings, std::uint8_t> {
///       public:
///         using OptionSet::OptionSet;
///         static const Toppings cheese;
///     };
///
/// Equality and hash are those of the number. Nothing here allocates or fails,
/// and all of it can be had at compile time. A set is a plain value: any thread may use its own.
template <typename Self, std::unsigned_integral Raw>
class OptionSet {
  public:
    /// The type of the bits, and of the stored form.
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

    /// Whether no bit is set; a set of nothing but nameless bits is not empty.
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

    /// Adds all of `members`; those present already stay.
    constexpr void insert(Self members) { rawValue_ = (self() | members).rawValue(); }
    /// Takes all of `members` away; those that are absent do not matter.
    constexpr void remove(Self members) { rawValue_ = (self() - members).rawValue(); }

    /// The union: what is in either.
    [[nodiscard]] friend constexpr Self operator|(Self a, Self b) {
        return Self(raw(a.rawValue() | b.rawValue()));
    }
    /// The intersection: what is in both.
    [[nodiscard]] friend constexpr Self operator&(Self a, Self b) {
        return Self(raw(a.rawValue() & b.rawValue()));
    }
    /// The symmetric difference: what is in one of them and not in the other.
    [[nodiscard]] friend constexpr Self operator^(Self a, Self b) {
        return Self(raw(a.rawValue() ^ b.rawValue()));
    }
    /// The subtraction: what is in `a` and not in `b`.
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

/// The classes that derive from `OptionSet` as it asks to be derived from; what is written once for
/// all of them, such as the hash and the stored form, is written for this.
template <typename T>
concept IsOptionSet = std::derived_from<T, OptionSet<T, typename T::RawValue>>;

}  // namespace tessara

/// The hash of the number, so that every set of flags can be a key.
template <tessara::IsOptionSet T>
struct std::hash<T> {
    std::size_t operator()(const T& value) const noexcept {
        return std::hash<typename T::RawValue>{}(value.rawValue());
    }
};
