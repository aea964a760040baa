// The FRU records that recognition does not use, for a person: board info area and multirecords.
#pragma once

#include "agent/report/FruBytes.h"
#include "agent/report/Page.h"
#include "host/ipmi/CommonAreaHeader.h"

namespace Agent {

/// Writes the board info area that `header` names (IPMI Platform Management FRU Information Storage
/// Definition, section 11), as far as it is known; nothing where there is none.
void writeBoardArea(Page& page, FruBytes const& fru, Ipmi::CommonAreaHeader const& header);

/// Writes the records of the multirecord area that `header` names (section 16), as far as they are
/// known: power supply information and DC output with what is in them, others by their type.
void writeMultirecords(Page& page, FruBytes const& fru, Ipmi::CommonAreaHeader const& header);

}  // namespace Agent
