// The typed list of what fills a template's placeholders, checked against the text at compile time.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "host/ipmi/ProductInfoArea.h"
#include "host/kex/String8.h"
#include "ipmi/Model.h"

namespace Emerson::IpmiIdentifier {

/// A text field of the product info area, as its accessor.
using Field = Kex::String8 const& (Ipmi::ProductInfoArea::*)() const;

/// Moves `rest` on behind its next placeholder; what was passed goes to `text`, `argument` in the
/// placeholder's stead.
inline void putNext(std::string& text, std::string_view& rest, std::string_view argument) {
  std::size_t const placeholder = rest.find('%');
  text.append(rest.substr(0, placeholder)).append(argument);
  rest.remove_prefix(placeholder + std::string_view("%s").size());
}

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

  /// `kTemplate` with its placeholders filled.
  template <auto const& kTemplate>
  static Kex::String8 fill(Model const& model, Ipmi::ProductInfoArea const& fields) {
    std::string_view rest = textOf(kTemplate);
    std::string text;
    text.reserve((rest.size() + ... + argument(kArguments, model, fields).size()));
    (putNext(text, rest, argument(kArguments, model, fields)), ...);
    text += rest;
    return Kex::String8(std::move(text));
  }

 private:
  static std::string_view textOf(std::string_view constant) { return constant; }
  static std::string_view textOf(Kex::String8 const& constant) { return constant.view(); }

  static std::string argument(int Model::*column, Model const& model,
                              Ipmi::ProductInfoArea const&) {
    return std::to_string(model.*column);
  }
  static std::string_view argument(char const* Model::*column, Model const& model,
                                   Ipmi::ProductInfoArea const&) {
    return model.*column;
  }
  static std::string_view argument(char const* (Model::*derived)() const noexcept,
                                   Model const& model, Ipmi::ProductInfoArea const&) {
    return (model.*derived)();
  }
  static std::string_view argument(Field field, Model const&, Ipmi::ProductInfoArea const& fields) {
    return (fields.*field)().charPtr();
  }
};

}  // namespace Emerson::IpmiIdentifier
