// The page that shows recordings as a picture.
#include "agent/page/Page.h"

#include "agent/base/JsonObject.h"
#include "agent/page/PageText.h"
#include "host/smbus/ErrorKind.h"

namespace Agent {

namespace {

/// The kinds of errors, in their order.
std::string kindsJson() {
  std::string kinds;
  for (Smbus::ErrorKindRow const& row : Smbus::kErrorKinds) {
    kinds += kinds.empty() ? "" : ",";
    kinds += JsonObject().add("name", row.name).add("text", row.text).text();
  }
  return kinds;
}

/// Appends JSON to a document of HTML. The one character that could end a script stands in JSON
/// only in strings, where it may be escaped.
void appendData(std::string& page, std::string_view json) {
  for (char const c : json) {
    if (c == '<') {
      page += "\\u003c";
    } else {
      page += c;
    }
  }
}

}  // namespace

std::string pageOf(std::vector<Lane> const& lanes, bool hasFiles) {
  std::string json =
      JsonObject().add("program", "psu-agent " PSU_VERSION).add("hasFiles", hasFiles).text();
  json.pop_back();
  json += ",\"kinds\":[" + kindsJson() + "],\"lanes\":[";
  char const* separator = "";
  for (Lane const& lane : lanes) {
    json += separator;
    separator = ",";
    lane.appendTo(json);
  }
  json += "]}";
  std::string page(kPageBefore);
  appendData(page, json);
  page += kPageAfter;
  return page;
}

}  // namespace Agent
