// The figures of a run as text for a monitoring system.
#include "agent/report/Metrics.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <limits>
#include <map>
#include <string_view>
#include <utility>

#include "agent/base/Text.h"
#include "agent/report/Report.h"

namespace Agent {

namespace {

struct Label {
  std::string_view name;
  std::string_view value;
};
using Labels = std::initializer_list<Label>;

std::string numberText(double value) {
  std::array<char, std::numeric_limits<double>::max_digits10 + 10> text{};
  return {text.data(), std::to_chars(text.begin(), text.end(), value).ptr};
}

std::string numberText(Kex::U64 value) { return std::to_string(value); }

std::string labelValue(std::string_view bytes) {
  std::string text;
  for (char const byte : latin1ToUtf8(bytes)) {
    if (byte == '\n') {
      text += "\\n";
    } else {
      text.append(byte == '\\' || byte == '"' ? 1 : 0, '\\') += byte;
    }
  }
  return text;
}

/// The samples of one family.
class Samples {
 public:
  explicit Samples(char const* family) : family_(family) {}

  template <class Value>
  void add(Labels labels, Value value, std::string_view suffix = "") {
    text_.append(family_).append(suffix);
    char separator = '{';
    for (Label const& label : labels) {
      text_.append(1, std::exchange(separator, ',')).append(label.name).append("=\"");
      text_.append(labelValue(label.value)) += '"';
    }
    text_.append(labels.size() == 0 ? " " : "} ").append(numberText(value)) += '\n';
  }
  std::string const& text() const { return text_; }

 private:
  char const* family_;
  std::string text_;
};

/// The identified supply of `slot`; null when there is none.
Supply const* identifiedIn(SlotMetrics const& slot) {
  return slot.supply && slot.supply->verdict == Verdict::identified ? &*slot.supply : nullptr;
}

std::string_view capacityOf(Supply const& supply) { return assigned(supply, "fru.capacity"); }

/// The direction that the supply's fan blows in, as the FDL calls it; empty when it says nothing.
std::string_view airflowOf(Supply const& supply) {
  std::string_view const properties = assigned(supply, "f1.physicalProperties");
  std::size_t const end = properties.find("Airflow'");
  std::size_t const start = properties.substr(0, end).rfind('\'');
  return end == std::string_view::npos || start == std::string_view::npos
             ? std::string_view()
             : properties.substr(start + 1, end - start - 1);
}

std::string_view serialNumberOf(Supply const& supply) {
  return supply.product ? supply.product->serialNumber().view() : std::string_view();
}

using Property = std::string_view(Supply const& supply);

/// How many identified supplies have each value; one that is not known is none.
std::map<std::string_view, Kex::U64> valuesOf(Metrics const& metrics, Property* property) {
  std::map<std::string_view, Kex::U64> values;
  for (SlotMetrics const& slot : metrics.slots) {
    Supply const* const supply = identifiedIn(slot);
    if (std::string_view const value = supply != nullptr ? property(*supply) : std::string_view();
        !value.empty()) {
      ++values[value];
    }
  }
  return values;
}

template <Property* kProperty>
void addDistinct(Samples& samples, Metrics const& metrics) {
  samples.add({}, Kex::U64{valuesOf(metrics, kProperty).size()});
}

template <Kex::U64 SlotMetrics::*kFigure>
void addPerSlot(Samples& samples, Metrics const& metrics) {
  for (SlotMetrics const& slot : metrics.slots) {
    samples.add({{"slot", slot.slot}}, slot.*kFigure);
  }
}

void addVerdicts(Samples& samples, Metrics const& metrics) {
  for (SlotMetrics const& slot : metrics.slots) {
    for (auto const& row : Hardware::PowerSupplySlot::kVerdicts) {
      bool const isIt = slot.supply && slot.supply->verdict == row.verdict;
      samples.add({{"slot", slot.slot}, {"verdict", row.name}}, Kex::U64{isIt});
    }
  }
}

void addSlotsByVerdict(Samples& samples, Metrics const& metrics) {
  for (auto const& row : Hardware::PowerSupplySlot::kVerdicts) {
    auto const count = std::ranges::count_if(metrics.slots, [&](SlotMetrics const& slot) {
      return slot.supply && slot.supply->verdict == row.verdict;
    });
    samples.add({{"verdict", row.name}}, static_cast<Kex::U64>(count));
  }
}

void addSupplies(Samples& samples, Metrics const& metrics) {
  for (SlotMetrics const& slot : metrics.slots) {
    if (Supply const* const supply = identifiedIn(slot)) {
      Kex::String8 const descriptor = supply->descriptor.value_or(Kex::String8());
      samples.add({{"slot", slot.slot},
                   {"descriptor", descriptor.view()},
                   {"model", assigned(*supply, "fru.modelName")},
                   {"capacity", capacityOf(*supply)},
                   {"serial_number", serialNumberOf(*supply)}},
                  Kex::U64{1});
    }
  }
}

void addFailures(Samples& samples, Metrics const& metrics) {
  for (SlotMetrics const& slot : metrics.slots) {
    for (Smbus::ErrorKindRow const& row : Smbus::kErrorKinds) {
      samples.add({{"slot", slot.slot}, {"kind", row.name}},
                  slot.failures[static_cast<std::size_t>(row.kind)]);
    }
  }
}

void addLastChanges(Samples& samples, Metrics const& metrics) {
  for (SlotMetrics const& slot : metrics.slots) {
    if (slot.supply) {
      samples.add({{"slot", slot.slot}}, slot.lastChange);
    }
  }
}

void addRecognition(Samples& samples, Metrics const& metrics) {
  for (SlotMetrics const& slot : metrics.slots) {
    Kex::U64 count = 0;
    for (std::size_t i = 0; i < slot.recognition.counts.size(); ++i) {
      count += slot.recognition.counts[i];
      std::string const bound =
          i < Histogram::kBounds.size() ? numberText(Histogram::kBounds[i]) : "+Inf";
      samples.add({{"slot", slot.slot}, {"le", bound}}, count, "_bucket");
    }
    samples.add({{"slot", slot.slot}}, slot.recognition.sum, "_sum");
    samples.add({{"slot", slot.slot}}, count, "_count");
  }
}

void addSharedSerialNumbers(Samples& samples, Metrics const& metrics) {
  auto const isShared = [](auto const& value) { return value.second > 1; };
  samples.add({}, static_cast<Kex::U64>(
                      std::ranges::count_if(valuesOf(metrics, &serialNumberOf), isShared)));
}

/// Metrics of one name.
struct Family {
  char const* name;
  char const* type;
  char const* help;
  void (*add)(Samples& samples, Metrics const& metrics);
};

constexpr char const* kGauge = "gauge";
constexpr char const* kCounter = "counter";

constexpr Family kFamilies[] = {
    {"psu_slot_verdict", kGauge, "Whether this is the slot's verdict.", &addVerdicts},
    {"psu_slots", kGauge, "Slots of this verdict.", &addSlotsByVerdict},
    {"psu_supply_info", kGauge, "The identified supply of the slot.", &addSupplies},
    {"psu_slot_last_change_seconds", kGauge,
     "When the verdict, the serial number or the FDL changed, by the clock of the agent.",
     &addLastChanges},
    {"psu_transactions_total", kCounter, "Bus transactions that ended.",
     &addPerSlot<&SlotMetrics::transactions>},
    {"psu_transaction_failures_total", kCounter, "Bus transactions that failed.", &addFailures},
    {"psu_detections_total", kCounter, "Detections that came to an end.",
     &addPerSlot<&SlotMetrics::detections>},
    {"psu_reviews_total", kCounter, "Detections that found the supply again that was there.",
     &addPerSlot<&SlotMetrics::reviews>},
    {"psu_swaps_total", kCounter, "Supplies that were identified in the place of another one.",
     &addPerSlot<&SlotMetrics::swaps>},
    {"psu_recognition_seconds", "histogram",
     "Time from the first answer of a supply to its being identified.", &addRecognition},
    {"psu_shared_serial_numbers", kGauge, "Serial numbers that more than one slot has.",
     &addSharedSerialNumbers},
    {"psu_distinct_capacities", kGauge, "Different capacities of identified supplies.",
     &addDistinct<&capacityOf>},
    {"psu_distinct_airflows", kGauge, "Different directions of airflow of identified supplies.",
     &addDistinct<&airflowOf>},
    {"psu_publishing_failures_total", kCounter,
     "Attempts to write or remove a published file that failed.",
     [](Samples& samples, Metrics const& metrics) { samples.add({}, metrics.publishingFailures); }},
    {"psu_agent_clock_seconds", kGauge, "The clock of the agent, which starts at 0.",
     [](Samples& samples, Metrics const& metrics) { samples.add({}, metrics.time); }},
    {"psu_agent_build_info", kGauge, "The version of the agent.",
     [](Samples& samples, Metrics const&) {
       samples.add({{"version", PSU_VERSION}}, Kex::U64{1});
     }},
};

}  // namespace

void Histogram::add(double seconds) {
  ++counts[static_cast<std::size_t>(std::ranges::lower_bound(kBounds, seconds) - kBounds.begin())];
  sum += seconds;
}

std::string metricsText(Metrics const& metrics) {
  std::string text;
  for (Family const& family : kFamilies) {
    Samples samples(family.name);
    family.add(samples, metrics);
    text.append("# HELP ").append(family.name).append(1, ' ').append(family.help);
    text.append("\n# TYPE ").append(family.name).append(1, ' ').append(family.type) += '\n';
    text += samples.text();
  }
  return text;
}

}  // namespace Agent
