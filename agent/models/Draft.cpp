// A model file for a supply that nobody knows, as far as it can be written without a person.
#include "agent/models/Draft.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <utility>

#include "agent/base/JsonDocument.h"
#include "agent/base/Text.h"
#include "agent/models/FdlCheck.h"
#include "agent/models/ModelFile.h"
#include "agent/models/ModelFolder.h"

namespace Agent {

namespace {

using Descriptors::KeyField;
using Json = JsonValue::Json;

/// A model of a family, and how like the supply's its nearest key is.
struct Nearest {
  Json family;
  std::size_t model = 0;
  std::string name;
  KeyField keyField{};
  Descriptors::MatchRule rule{};
  std::size_t common = 0;
};

std::string_view keyOf(Ipmi::ProductInfoArea const& fields, KeyField field) {
  return (field == KeyField::partNumber ? fields.partNumber() : fields.productName()).view();
}

/// How many characters both begin with, in either case.
std::size_t commonStart(std::string_view one, std::string_view other) {
  auto const isSame = [](unsigned char a, unsigned char b) {
    return std::tolower(a) == std::tolower(b);
  };
  return static_cast<std::size_t>(std::ranges::mismatch(one, other, isSame).in1 - one.begin());
}

/// Looks for a nearer model in the file; one that is no model file has none.
void look(std::string const& file, Ipmi::ProductInfoArea const& fields,
          std::optional<Nearest>& nearest) {
  try {
    Json family = parseJson(readModelText(file));
    Models const models = parseModels(family, file);
    for (std::size_t i = 0; i < models.size(); ++i) {
      Model const& model = *models[i];
      for (KeyField const field : {KeyField::partNumber, KeyField::productName}) {
        for (std::string const& key : model.keys) {
          std::size_t const common = commonStart(Descriptors::trimmed(keyOf(fields, field)), key);
          if (!nearest || common > nearest->common) {
            nearest = {.family = family,
                       .model = i,
                       .name = model.name,
                       .keyField = model.keyField,
                       .rule = model.rule,
                       .common = common};
          }
        }
      }
    }
  } catch (UsageError const&) {
    return;
  } catch (Failure const&) {
    return;
  }
}

/// The mark, with what stands there in the family.
std::string toFillIn(std::string const& value, std::string const& model) {
  return std::string(kToFillIn) + " (" + value + " in " + model + ')';
}

/// The family's lines; what they assign to what every FDL has of its own is marked.
Json fdlOf(Nearest const& nearest) {
  Json fdl = nearest.family["fdl"];
  for (Json& line : fdl) {
    std::string const text = line;
    for (std::string_view const attribute : kAssigned) {
      if (assigns(text, attribute) && text.find("${") == std::string::npos) {
        std::size_t const value = text.find_first_not_of(' ', text.find('=') + 1);
        line = std::string(attribute) + " = " + toFillIn(text.substr(value), nearest.name);
      }
    }
  }
  return fdl;
}

/// The columns of the nearest model, each marked.
Json columnsOf(Json const& model, std::string const& name) {
  Json columns = Json::object();
  for (auto const& [column, value] : model["columns"].items()) {
    if (value.is_array()) {
      columns[column] = value;
      columns[column].insert(columns[column].begin(),
                             std::string(kToFillIn) + " (these lines stand in " + name + ')');
    } else {
      columns[column] = toFillIn(value.is_string() ? value.get<std::string>() : value.dump(), name);
    }
  }
  return columns;
}

}  // namespace

std::string draft(Ipmi::ProductInfoArea const& fields, std::vector<std::string> const& paths) {
  std::optional<Nearest> nearest;
  for (std::string const& path : paths) {
    for (std::string const& file : modelFilesIn(path)) {
      look(file, fields, nearest);
    }
  }
  if (!nearest) {
    throw Failure("there is no model file whose template a draft could take");
  }
  KeyField field = nearest->keyField;
  if (Descriptors::trimmed(keyOf(fields, field)).empty()) {
    field = field == KeyField::partNumber ? KeyField::productName : KeyField::partNumber;
  }
  bool const isExact = nearest->rule == Descriptors::MatchRule::exactLength;
  std::string_view const stored = keyOf(fields, field);
  std::string_view const key = isExact ? stored : Descriptors::trimmed(stored);
  if (Descriptors::trimmed(key).empty()) {
    throw Failure("the supply has neither a part number nor a product name");
  }
  auto const nameOf = [](auto const& names, auto value) {
    return std::string(names[static_cast<std::size_t>(value)]);
  };
  Json const& like = nearest->family["models"][nearest->model];
  Json model;
  model["name"] = std::string(kToFillIn);
  model["keys"] = Json::array({latin1ToUtf8(key)});
  if (like.contains("columns")) {
    model["columns"] = columnsOf(like, nearest->name);
  }
  Json document;
  document["comment"] = "Draft after " + nearest->name +
                        ": compare each line with the data sheet, and replace what is marked.";
  document["keyField"] = nameOf(Descriptors::kKeyFieldNames, field);
  document["rule"] = isExact ? "exactLength" : "trimmedEquality";
  document["fdl"] = fdlOf(*nearest);
  document["models"] = Json::array({model});
  return document.dump(2);
}

}  // namespace Agent
