// Fuzzes the reader of model files: models that are whole, or a refusal that names the place.
#include <string>
#include <string_view>

#include "agent/base/Error.h"
#include "agent/base/JsonDocument.h"
#include "agent/models/ModelDescriptor.h"
#include "agent/models/ModelFile.h"
#include "agent/models/Question.h"
#include "fuzz/FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const text(data, data + size);
  try {
    for (Agent::ModelPtr const& model : Agent::parseModels(Agent::parseJson(text), "file")) {
      Fuzz::require(!model->name.empty() && !model->keys.empty());
      auto const descriptor = Agent::newDescriptor(model);
      for (std::string const& key : model->keys) {
        Fuzz::require(Agent::Question(model->keyField, key).isKnownTo(*descriptor));
      }
    }
  } catch (Agent::UsageError const& error) {
    std::string_view const message = error.what();
    Fuzz::require(!message.empty() && message.find('\n') == std::string_view::npos);
  }
  return 0;
}
