// The model files in use, and the descriptors that they add to the registry.
#pragma once

#include <string>
#include <vector>

#include "agent/models/ModelDescriptor.h"
#include "agent/models/Question.h"

namespace Agent {

/// Which model files there are.
struct ModelOptions {
  /// Files, and folders whose `*.json` are taken in the order of their names.
  std::vector<std::string> paths;
  /// Whether a file that is refused ends the program; else the others are used.
  bool isStrict = false;
};

/// The models of files, each a descriptor in the host's registry, asked after those of the plug-in.
/// A file is used whole or, when a value of it does not fit, not at all. What was registered stays
/// for the life of the process, or until the files are read again.
class ModelSet {
 public:
  /// A file that is not used.
  struct Refusal {
    std::string file;
    /// One line: what is wrong, behind the path of the value where it is a value.
    std::string why;
  };

  /// Reads the files; the plug-in is loaded already. Tells of each that is refused, on stderr; of
  /// the last by a `UsageError` where the options are strict.
  explicit ModelSet(ModelOptions const& options);

  /// Reads the files again, and tells of each that is refused; its models stay as they were. Slots
  /// keep what they found; a supply that was unrecognised must be detected again to be known.
  void reload();

  /// The descriptors in the order of the files.
  std::vector<Kex::Ptr<ModelDescriptor>> const& descriptors() const { return descriptors_; }
  /// What the last reading refused.
  std::vector<Refusal> const& refusals() const { return refusals_; }

 private:
  void read();
  Models modelsOf(std::string const& file);
  void add(Models const& models, std::vector<DescriptorPtr>& asked);

  std::vector<std::string> paths_;
  std::vector<Kex::Ptr<ModelDescriptor>> descriptors_;
  std::vector<Refusal> refusals_;
  /// The models that were in use before the files were read again.
  Models before_;
};

}  // namespace Agent
