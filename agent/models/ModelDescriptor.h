// The descriptor of a model that a file adds, and its type record.
#pragma once

#include <utility>

#include "agent/models/Model.h"
#include "host/ipmi/SupportedPowerSupplyDescriptorBase.h"

namespace Agent {

/// Recognises the supplies of one model, as the plug-in's descriptors do theirs.
class ModelDescriptor final : public Ipmi::SupportedPowerSupplyDescriptorBase {
 public:
  ModelDescriptor(Kex::Name name, ModelPtr model)
      : SupportedPowerSupplyDescriptorBase(std::move(name)), model_(std::move(model)) {}
  /// The record of the type `ModelFiles::NAME`. It lives as long as the process: there is one for
  /// each name that a model ever had.
  Kex::KexType& fwkType() const override;
  ~ModelDescriptor() override;

  /// Sets `managed` and `fdl` from `idpromContents`, which must have product info.
  void doGenerateFdl(Kex::Ptr<Ipmi::IdpromContents> const& idpromContents) override;

  ModelPtr const& model() const { return model_; }

 private:
  ModelPtr model_;
};

/// A descriptor named after its model.
Kex::Ptr<ModelDescriptor> newDescriptor(ModelPtr const& model);

/// From now on, what is created by the type of this name is a descriptor of `model`.
void typeModelIs(ModelPtr const& model);

}  // namespace Agent
