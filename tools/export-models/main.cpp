// export-models FOLDER: writes the plug-in's families as model files, one a family.
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

#include "ipmi/families/All.h"

namespace {

using namespace Emerson::IpmiIdentifier;
using Json = nlohmann::ordered_json;
using Field = Descriptors::Field;

template <class Pointer>
struct Named {
  Pointer member;
  char const* name;
};

// What fills placeholders, by the name that stands in a model file.
constexpr Named<Field> kFields[] = {
    {&Ipmi::ProductInfoArea::manufacturerName, "manufacturerName"},
    {&Ipmi::ProductInfoArea::serialNumber, "serialNumber"},
    {&Ipmi::ProductInfoArea::productVersion, "productVersion"},
};
constexpr Named<char const * Model::*> kTexts[] = {
    {&Model::api, "api"},
    {&Model::modelName, "modelName"},
    {&Model::offOnPowerLoss, "offOnPowerLoss"},
    {&Model::extraSensorBlock, "extraSensorBlock"},
};
constexpr Named<int Model::*> kNumbers[] = {
    {&Model::fanSpeed, "fanSpeed"},
    {&Model::sensor1Overheat, "sensor1Overheat"},
    {&Model::sensor1Critical, "sensor1Critical"},
    {&Model::sensor2Overheat, "sensor2Overheat"},
    {&Model::sensor2Critical, "sensor2Critical"},
    {&Model::sensor2Target, "sensor2Target"},
};
constexpr Named<char const* (Model::*)() const noexcept> kDerived[] = {
    {&Model::airflowText, "airflow"},
    {&Model::fanSuffix, "fanSuffix"},
};

/// The name of `member` in `table`; one that has none ends the build. Sanitizers keep compilers
/// from comparing members' addresses in constants.
template <class Pointer, std::size_t kSize>
char const* nameIn(Named<Pointer> const (&table)[kSize], Pointer member) {
  for (auto const& row : table) {
    if (row.member == member) {
      return row.name;
    }
  }
  throw std::logic_error("a member has no name in model files");
}

/// `text` cut at its line feeds; it ends with one.
Json linesOf(std::string_view text) {
  Json lines = Json::array();
  while (!text.empty()) {
    std::size_t const end = text.find('\n');
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  return lines;
}

/// One argument of a template: what stands in its place, and the model's own value of it.
struct Argument {
  std::string place;
  /// Empty for a field of the supply.
  std::function<void(Json& columns, Model const& model)> addTo;
};

template <auto kArgument>
Argument argumentOf() {
  using Type = std::remove_const_t<decltype(kArgument)>;
  auto const placeOf = [](std::string const& name) { return "${" + name + "}"; };
  if constexpr (std::is_same_v<Type, Field>) {
    return {placeOf(nameIn(kFields, kArgument)), nullptr};
  } else if constexpr (std::is_same_v<Type, char const * Model::*>) {
    std::string const name = nameIn(kTexts, kArgument);
    return {placeOf(name),
            [name](Json& columns, Model const& model) { columns[name] = model.*kArgument; }};
  } else if constexpr (std::is_same_v<Type, int Model::*>) {
    std::string const name = nameIn(kNumbers, kArgument);
    return {placeOf(name),
            [name](Json& columns, Model const& model) { columns[name] = model.*kArgument; }};
  } else {
    std::string const name = nameIn(kDerived, kArgument);
    return {placeOf(name),
            [name](Json& columns, Model const& model) { columns[name] = (model.*kArgument)(); }};
  }
}

/// A column that may be empty holds whole lines, whose place is a line of its own.
template <char const* Model::*kColumn>
Argument argumentOf(MayBeEmpty<kColumn>) {
  std::string const name = nameIn(kTexts, kColumn);
  return {"${" + name + "}\n",
          [name](Json& columns, Model const& model) { columns[name] = linesOf(model.*kColumn); }};
}

template <auto kArgument>
Argument anyArgument() {
  if constexpr (requires { argumentOf(kArgument); }) {
    return argumentOf(kArgument);
  } else {
    return argumentOf<kArgument>();
  }
}

template <auto... kArguments>
std::array<Argument, sizeof...(kArguments)> argumentsOf(Filling<kArguments...>) {
  return {anyArgument<kArguments>()...};
}

Json modelOf(Model const& row, auto const& arguments) {
  Json model;
  model["name"] = kTypeNames[static_cast<std::size_t>(row.id)];
  for (std::string_view const key : row.keys) {
    if (!key.empty()) {
      model["keys"].push_back(key);
    }
  }
  if (!row.message.empty()) {
    model["message"] = row.message;
  }
  if (row.keyTrace != KeyTrace::none) {
    model["keyTrace"] = Descriptors::kKeyTraceNames[static_cast<std::size_t>(row.keyTrace)];
  }
  for (Argument const& argument : arguments) {
    if (argument.addTo != nullptr) {
      argument.addTo(model["columns"], row);
    }
  }
  return model;
}

/// Writes the file of one family.
template <std::size_t kModels>
void write(std::filesystem::path const& file, std::string_view text, auto const& filling,
           Model const (&models)[kModels]) {
  auto const arguments = argumentsOf(filling);
  std::string fdl;
  for (Argument const& argument : arguments) {
    std::size_t const placeholder = text.find('%');
    fdl += text.substr(0, placeholder);
    fdl += argument.place;
    text.remove_prefix(placeholder + 2);
  }
  fdl += text;
  Family const& family = *models[0].family;
  Json document;
  document["keyField"] = Descriptors::kKeyFieldNames[static_cast<std::size_t>(family.keyField)];
  document["rule"] = Descriptors::kMatchRuleNames[static_cast<std::size_t>(family.rule)];
  document["fdl"] = linesOf(fdl);
  for (Model const& model : models) {
    document["models"].push_back(modelOf(model, arguments));
  }
  std::ofstream out(file, std::ios::binary);
  if (!(out << document.dump(2) << '\n').flush()) {
    throw std::filesystem::filesystem_error("cannot write", file, {});
  }
}

void writeAll(std::filesystem::path const& folder) {
  std::filesystem::create_directories(folder);
  write(folder / "ds1100.json", kDs1100FdlText, Ds1100Filling(), kDs1100Models);
  write(folder / "ds1600.json", kDs1600FdlText, Ds1600Filling(), kDs1600Models);
  write(folder / "ds2700.json", kDs2700FdlText, Ds2700Filling(), kDs2700Models);
  write(folder / "ds2900.json", ds2900FdlTemplate, Ds2900Filling(), kDs2900Models);
  write(folder / "ds3000.json", kDs3000FdlText, Ds3000Filling(), kDs3000Models);
  write(folder / "ds460.json", kDs460FdlText, Ds460Filling(), kDs460Models);
  write(folder / "ds500.json", kDs500FdlText, Ds500Filling(), kDs500Models);
  write(folder / "ds750.json", kDs750FdlText, Ds750Filling(), kDs750Models);
  write(folder / "emerson760.json", emerson760FdlTemplate, Emerson760Filling(), kEmerson760Models);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::cerr << "usage: export-models FOLDER\n";
    return EXIT_FAILURE;
  }
  writeAll(argv[1]);
  return EXIT_SUCCESS;
} catch (std::exception const& error) {
  std::cerr << "export-models: " << error.what() << '\n';
  return EXIT_FAILURE;
}
