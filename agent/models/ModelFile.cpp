// Model files: families of supplies that are recognised beside those of the plug-in.
#include "agent/models/ModelFile.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <span>
#include <variant>

#include "agent/base/InputFile.h"
#include "agent/base/Text.h"
#include "agent/models/FdlCheck.h"

namespace Agent {

namespace {

using Descriptors::MatchRule;
using Ipmi::ProductInfoArea;
using Texts = std::vector<std::string>;

constexpr std::uintmax_t kLongestFile = std::uintmax_t{1} << 20;
constexpr std::size_t kMostModels = 100;
constexpr std::size_t kMostKeys = 16;
/// What one field of a FRU area holds.
constexpr std::size_t kLongestKey = 63;
constexpr std::size_t kLongestName = 40;
constexpr std::size_t kMostLines = 1000;
constexpr std::size_t kLongestLine = 1000;
constexpr std::size_t kLongestFdl = std::size_t{64} << 10;

/// The fields that an FDL has places for, by the names of those places.
constexpr struct {
  std::string_view name;
  Descriptors::Field field;
} kFields[] = {
    {"manufacturerName", &ProductInfoArea::manufacturerName},
    {"serialNumber", &ProductInfoArea::serialNumber},
    {"productVersion", &ProductInfoArea::productVersion},
};

Descriptors::Field fieldOf(std::string_view name) {
  auto const* const found =
      std::ranges::find(kFields, name, [](auto const& row) { return row.name; });
  return found == std::end(kFields) ? nullptr : found->field;
}

/// A text of the file that has nothing left to fill in.
std::string filledIn(JsonValue const& value, std::string text) {
  if (text.find(kToFillIn) != std::string::npos) {
    value.refuse(inQuotes(text) + " is still to be filled in");
  }
  return text;
}

/// A text of at most `most` printable ASCII characters.
std::string printable(JsonValue const& value, std::size_t most) {
  std::string text = value.string();
  if (std::ranges::any_of(text, [](char byte) { return byte < ' ' || byte > '~'; })) {
    value.refuse(inQuotes(text) + " has other characters than printable ASCII");
  }
  if (text.size() > most) {
    value.refuse("has " + std::to_string(text.size()) + " characters, and may have at most " +
                 std::to_string(most));
  }
  return filledIn(value, std::move(text));
}

/// The enumerator that the file names.
template <class Enum>
Enum choice(JsonValue const& value, std::span<std::string_view const> names) {
  std::string const name = value.string();
  auto const found = std::ranges::find(names, name);
  if (found == names.end()) {
    std::string all;
    for (std::string_view const one : names) {
      all += (all.empty() ? "" : ", ") + std::string(one);
    }
    value.refuse(inQuotes(name) + " is none of " + all);
  }
  return static_cast<Enum>(found - names.begin());
}

/// Elements of an array that has 1 to `most` of them.
std::vector<JsonValue> someElements(JsonValue const& value, std::size_t most) {
  std::vector<JsonValue> elements = value.elements();
  if (elements.empty() || elements.size() > most) {
    value.refuse("has " + std::to_string(elements.size()) + " elements, and must have 1 to " +
                 std::to_string(most));
  }
  return elements;
}

bool isWord(std::string_view text, std::string_view alsoAllowed) {
  return !text.empty() && std::ranges::all_of(text, [&](char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') || alsoAllowed.find(byte) != std::string_view::npos;
  });
}

/// A model's own value: a text that stands in a line, or whole lines.
struct Column {
  std::variant<std::string, Texts> value;
  bool isUsed = false;
};
using Columns = std::map<std::string, Column, std::less<>>;

Column column(JsonValue const& value) {
  if (value.isArray()) {
    Texts lines;
    for (JsonValue const& line : value.elements()) {
      lines.push_back(printable(line, kLongestLine));
    }
    return {.value = std::move(lines)};
  }
  return {.value = value.isNumber() ? std::to_string(value.integer(0, 1'000'000'000))
                                    : printable(value, kLongestLine)};
}

Columns columns(JsonValue const& value) {
  Columns columns;
  for (auto const& [name, member] : value.members()) {
    if (!isWord(name, "_")) {
      member.refuse("the name of a column has letters, digits and '_' only");
    }
    if (fieldOf(name) != nullptr) {
      member.refuse("is the name of a field, which every supply has of its own");
    }
    columns.emplace(name, column(member));
  }
  return columns;
}

/// Writes the lines of a family's FDL with the columns of one model.
class FdlWriter {
 public:
  FdlWriter(FdlTemplate& fdl, Columns& columns) : fdl_(fdl), columns_(columns) {}

  void lineAdd(JsonValue const& value) {
    std::string const line = printable(value, kLongestLine);
    if (Texts const* const lines = wholeLines(line)) {
      for (std::string const& one : *lines) {
        textAdd(value, one + '\n');
      }
      return;
    }
    std::string_view rest = line;
    for (std::size_t at = 0; (at = rest.find('$')) != std::string_view::npos;) {
      textAdd(value, rest.substr(0, at));
      rest.remove_prefix(at);
      rest.remove_prefix(placeAdd(value, rest));
    }
    textAdd(value, std::string(rest) + '\n');
  }

 private:
  void textAdd(JsonValue const& value, std::string_view text) {
    length_ += text.size();
    if (length_ > kLongestFdl) {
      value.refuse("the FDL has more than " + std::to_string(kLongestFdl) + " bytes");
    }
    fdl_.textAdd(text);
  }

  /// The lines that stand in the place of `line`; null where it is a line itself.
  Texts const* wholeLines(std::string_view line) {
    if (!line.starts_with("${") || line.find('}') != line.size() - 1) {
      return nullptr;
    }
    auto const found = columns_.find(line.substr(2, line.size() - 3));
    auto* const lines =
        found == columns_.end() ? nullptr : std::get_if<Texts>(&found->second.value);
    if (lines != nullptr) {
      found->second.isUsed = true;
    }
    return lines;
  }

  /// Writes what `rest`, which begins with a dollar sign, begins with, and returns its length.
  std::size_t placeAdd(JsonValue const& value, std::string_view rest) {
    if (rest.starts_with("$$")) {
      textAdd(value, "$");
      return 2;
    }
    std::size_t const end = rest.starts_with("${") ? rest.find('}') : std::string_view::npos;
    if (end == std::string_view::npos) {
      value.refuse(inQuotes(rest) + " begins with a dollar sign, which is written $$");
    }
    std::string_view const name = rest.substr(2, end - 2);
    if (auto const field = fieldOf(name)) {
      fdl_.fieldAdd(field);
      return end + 1;
    }
    auto const found = columns_.find(name);
    if (found == columns_.end()) {
      value.refuse(inQuotes(name) + " is neither a field nor a column of every model");
    }
    auto* const text = std::get_if<std::string>(&found->second.value);
    if (text == nullptr) {
      value.refuse("the column " + inQuotes(name) +
                   " has whole lines, so its place is a line of its own");
    }
    found->second.isUsed = true;
    textAdd(value, *text);
    return end + 1;
  }

  FdlTemplate& fdl_;
  Columns& columns_;
  std::size_t length_ = 0;
};

class Reader {
 public:
  explicit Reader(std::string const& file) : file_(file) {}

  Models models(JsonValue const& value) {
    value.checkKeys({"$schema", "comment", "keyField", "rule", "fdl", "models"});
    for (char const* const key : {"$schema", "comment"}) {
      if (value.has(key)) {
        printable(value.at(key), kLongestLine);
      }
    }
    keyField_ = choice<Descriptors::KeyField>(value.at("keyField"), Descriptors::kKeyFieldNames);
    rule_ = choice<MatchRule>(value.at("rule"), Descriptors::kMatchRuleNames);
    JsonValue const fdl = value.at("fdl");
    std::vector<JsonValue> const lines = someElements(fdl, kMostLines);
    Models models;
    for (JsonValue const& one : someElements(value.at("models"), kMostModels)) {
      models.push_back(model(one, fdl, lines));
    }
    return models;
  }

 private:
  ModelPtr model(JsonValue const& value, JsonValue const& fdl,
                 std::vector<JsonValue> const& lines) const {
    value.checkKeys({"name", "comment", "keys", "message", "keyTrace", "columns"});
    auto const model = std::make_shared<Model>();
    model->file = file_;
    model->path = value.path();
    model->keyField = keyField_;
    model->rule = rule_;
    model->name = printable(value.at("name"), kLongestName);
    if (!isWord(model->name, "_.-") || !isWord(model->name.substr(0, 1), "")) {
      value.at("name").refuse(inQuotes(model->name) +
                              " is not made of letters, digits, '_', '.' and '-'");
    }
    if (value.has("comment")) {
      printable(value.at("comment"), kLongestLine);
    }
    for (JsonValue const& one : someElements(value.at("keys"), kMostKeys)) {
      model->keys.push_back(key(one, model->keys));
    }
    model->keyViews.assign(model->keys.begin(), model->keys.end());
    if (value.has("message")) {
      model->message = printable(value.at("message"), kLongestLine);
    }
    if (value.has("keyTrace")) {
      model->keyTrace =
          choice<Descriptors::KeyTrace>(value.at("keyTrace"), Descriptors::kKeyTraceNames);
    }
    writeFdl(*model, value, lines);
    checkFdl(*model, fdl);
    return model;
  }

  std::string key(JsonValue const& value, Texts const& before) const {
    std::string key = filledIn(value, value.bytes());
    std::string_view const seen = Descriptors::trimmed(key);
    if (key.size() > kLongestKey || seen.empty()) {
      value.refuse(inQuotes(key) + " has not 1 to " + std::to_string(kLongestKey) +
                   " characters besides blanks");
    }
    if (rule_ != MatchRule::exactLength && seen != key) {
      value.refuse(inQuotes(key) +
                   " begins or ends with blanks, which only the rule exactLength "
                   "compares");
    }
    if (std::ranges::find(before, key) != before.end()) {
      value.refuse(inQuotes(key) + " is there twice");
    }
    return key;
  }

  static void writeFdl(Model& model, JsonValue const& value, std::vector<JsonValue> const& lines) {
    Columns columns = value.has("columns") ? Agent::columns(value.at("columns")) : Columns();
    FdlWriter writer(model.fdl, columns);
    for (JsonValue const& line : lines) {
      writer.lineAdd(line);
    }
    for (auto const& [name, column] : columns) {
      if (!column.isUsed) {
        value.at("columns").at(name.c_str()).refuse("no line of the FDL has a place for it");
      }
    }
  }

  static void checkFdl(Model const& model, JsonValue const& fdl) {
    if (auto const fault = fdlFault(model.fdl.filled(ProductInfoArea(Hal::Buf(0))).view())) {
      fdl.refuse("with the columns of " + model.path + ", it " + *fault);
    }
  }

  std::string file_;
  Descriptors::KeyField keyField_{};
  MatchRule rule_{};
};

}  // namespace

std::string readModelText(std::string const& file) {
  checkInputFile(file, kLongestFile);
  errno = 0;
  std::ifstream in(file, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(in), {}};
  if (!in) {
    throw Failure(file + ": " + (errno == 0 ? "cannot be read" : systemError(errno)));
  }
  return text;
}

Models parseModels(JsonValue::Json const& document, std::string const& file) {
  return Reader(file).models(JsonValue(document, ""));
}

}  // namespace Agent
