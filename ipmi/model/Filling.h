// The typed list of what fills a template's placeholders, checked against the text at compile time.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <cstddef>
#include <string_view>
#include <type_traits>

#include "host/descriptors/Filling.h"
#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/base/String8.h"
#include "ipmi/model/Model.h"

namespace Emerson::IpmiIdentifier {

using Descriptors::Field;

/// What is put in a placeholder's stead.
class Argument {
 public:
  /// The number in decimal digits.
  explicit Argument(int number);
  /// The text up to its NUL; it is kept, not copied.
  explicit Argument(char const* text) : text_(text) {}
  Argument(Argument const&) = delete;
  Argument& operator=(Argument const&) = delete;
  ~Argument() = default;

  /// Lives as long as the argument.
  std::string_view text() const { return text_; }

 private:
  std::array<char, 12> digits_;
  std::string_view text_;
};

/// An argument that is a column which a row may leave empty.
template <char const* Model::*kColumn>
struct MayBeEmpty {};

/// The arguments of one template in the order of its placeholders. An argument is a column of the
/// row (`&Model::api`), a text worked out from it (`&Model::airflowText`) or a field of the product
/// info area (`&Ipmi::ProductInfoArea::serialNumber`), which goes in as stored up to its first NUL.
template <auto... kArguments>
class Filling {
 public:
  /// Whether the placeholders of `text` are the arguments' in number, order and kind (`%d` for
  /// numbers, `%s` for texts), and no other `%` stands in it.
  static consteval bool fits(std::string_view text) {
    constexpr char kKinds[] = {std::is_same_v<decltype(kArguments), int Model::*> ? 'd' : 's' ...};
    std::size_t found = 0;
    for (std::size_t at = 0; at != text.size(); ++at) {
      if (text[at] != '%') {
        continue;
      }
      if (found == sizeof...(kArguments) || ++at == text.size() || text[at] != kKinds[found]) {
        return false;
      }
      ++found;
    }
    return found == sizeof...(kArguments);
  }

  /// Whether `row` has each column that is an argument, unless that may be empty, and no other one.
  static constexpr bool isComplete(Model const& row) {
    return std::ranges::all_of(Model::texts(),
                               [&](auto column) {
                                 return (*(row.*column) != '\0') == takes(column) ||
                                        isOptional(column);
                               }) &&
           std::ranges::all_of(Model::numbers(),
                               [&](auto column) { return (row.*column != 0) == takes(column); });
  }

  /// `kTemplate` with its placeholders filled.
  template <auto const& kTemplate>
  static Kex::String8 fill(Model const& model, Ipmi::ProductInfoArea const& fields) {
    return filled(textOf(kTemplate), Argument(value(kArguments, model, fields))...);
  }

 private:
  static Kex::String8 filled(std::string_view pattern,
                             std::same_as<Argument> auto const&... arguments) {
    std::string_view const texts[] = {arguments.text()...};
    return Descriptors::filled(pattern, texts);
  }

  static std::string_view textOf(char const* constant) { return constant; }
  static std::string_view textOf(Kex::String8 const& constant) { return constant.view(); }

  template <class Column>
  static constexpr bool takes(Column column) {
    return (... || [&] {
      if constexpr (std::is_same_v<std::remove_const_t<decltype(kArguments)>, Column>) {
        return kArguments == column;
      } else {
        return false;
      }
    }());
  }
  template <char const* Model::*kColumn>
  static constexpr bool isOptionalIn(MayBeEmpty<kColumn>, char const* Model::*column) {
    return kColumn == column;
  }
  static constexpr bool isOptionalIn(auto, char const* Model::*) { return false; }
  static constexpr bool isOptional(char const* Model::*column) {
    return (... || isOptionalIn(kArguments, column));
  }

  template <char const* Model::*kColumn>
  static char const* value(MayBeEmpty<kColumn>, Model const& model, Ipmi::ProductInfoArea const&) {
    return model.*kColumn;
  }
  static int value(int Model::*column, Model const& model, Ipmi::ProductInfoArea const&) {
    return model.*column;
  }
  static char const* value(char const* Model::*column, Model const& model,
                           Ipmi::ProductInfoArea const&) {
    return model.*column;
  }
  static char const* value(char const* (Model::*derived)() const noexcept, Model const& model,
                           Ipmi::ProductInfoArea const&) {
    return (model.*derived)();
  }
  static char const* value(Field field, Model const&, Ipmi::ProductInfoArea const& fields) {
    return (fields.*field)().charPtr();
  }
};

}  // namespace Emerson::IpmiIdentifier
