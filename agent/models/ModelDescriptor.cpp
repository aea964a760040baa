// The descriptor of a model that a file adds, and its type record.
#include "agent/models/ModelDescriptor.h"

#include <map>
#include <utility>

#include "host/descriptors/Generate.h"
#include "host/tables/ArgumentReader.h"
#include "host/tables/TypeTable.h"

namespace Agent {

namespace {

// The handle is there before somebody turns it on.
[[maybe_unused]] bool const isTraced = (Descriptors::traceHandle(), true);

/// What a record's table refers to.
struct TypeName {
  explicit TypeName(std::string const& name) : shortName(name), fullName("ModelFiles::" + name) {}
  std::string shortName;
  std::string fullName;
};

/// The record of the type of a model.
class ModelType final : public Tables::TableType {
 public:
  using TableType::TableType;

  void modelIs(ModelPtr model) { model_ = std::move(model); }

  Kex::Ptr<Kex::GenericIf> genericIf(Kex::GenericIf const* arguments, bool) const override {
    Tables::ArgumentReader reader(arguments);
    auto name = reader.next<Kex::Name>("name");
    reader.end(table().shortName);
    return Kex::KexType::genericIf(Kex::make<ModelDescriptor>(std::move(name), model_), false);
  }

 private:
  void declareAttributes() override {
    Tables::declareAttributes(*this, table().baseRecord(), table().rows);
  }

  ModelPtr model_;
};

/// A record, with the table that it refers to.
struct Entry {
  explicit Entry(std::string const& name)
      : names(name),
        table{.shortName = names.shortName.c_str(),
              .fullName = names.fullName.c_str(),
              .base = &Ipmi::SupportedPowerSupplyDescriptorBase::_fwkType,
              .size = sizeof(ModelDescriptor),
              .isEntity = true,
              .constructorArguments = Tables::kNamedEntityArguments,
              .rows = {}},
        record(Tables::newRecord<ModelType>(table)) {
    Tables::declareType(record, table);
    Kex::KexType::typeNodeIs(record, table.fullName);
  }
  Entry(Entry const&) = delete;
  Entry& operator=(Entry const&) = delete;
  ~Entry() = default;

  TypeName names;
  Tables::TypeTable table;
  ModelType& record;
};

ModelType& typeOf(Model const& model) {
  // Never destroyed, as are the records.
  static auto& entries = *new std::map<std::string, Entry>;
  return entries.try_emplace(model.name, model.name).first->second.record;
}

}  // namespace

Kex::KexType& ModelDescriptor::fwkType() const { return typeOf(*model_); }

ModelDescriptor::~ModelDescriptor() = default;

void ModelDescriptor::doGenerateFdl(Kex::Ptr<Ipmi::IdpromContents> const& idpromContents) {
  Descriptors::doGenerateFdl(
      *this, model_->recognition(), idpromContents,
      [this](Ipmi::ProductInfoArea const& fields) { return model_->fdl.filled(fields); });
}

Kex::Ptr<ModelDescriptor> newDescriptor(ModelPtr const& model) {
  return Kex::make<ModelDescriptor>(Kex::Name(Kex::String8(std::string_view(model->name))), model);
}

void typeModelIs(ModelPtr const& model) { typeOf(*model).modelIs(model); }

}  // namespace Agent
