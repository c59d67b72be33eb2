// Decoding of one framed sentence: its address, the descriptor of its type, its fields, and the call to
// the handler's operation for that type.
#pragma once

#include "os/nmea/SentenceHandler.h"

#include <cstdint>
#include <string_view>

namespace os::nmea {

enum class SentenceKind : std::uint32_t {
    Any = 0,
    Gga, Gll, Gsa, Gst, Gsv, Rmc, Vtg, Zda, Hdg, Dpt, Dbt, Mtw, Pgrmz,
};

// Selects sentences: by kind and variant (0 matching any) and by talker, type and manufacturer (empty
// matching any). The recognised types are listed as descriptors; a caller can use one to pick sentences.
struct SentenceDescriptor {
    SentenceKind kind = SentenceKind::Any;
    std::uint32_t variant = 0; // reserved for types whose layout depends on the talker; 0 any
    std::string_view talker;
    std::string_view type;
    std::string_view manufacturer;
    bool proprietary = false;

    bool matches(const SentenceAddress& address) const;
};

// "GPRMC" -> talker "GP", type "RMC"; "PGRMZ" -> manufacturer "GRM", type "Z". False when the first
// field is not an address (letters and digits, two or more for the talker and type).
bool parseAddress(std::string_view field, SentenceAddress& address);

// The descriptor of a recognised type, or nullptr.
const SentenceDescriptor* findDescriptor(const SentenceAddress& address);

// Decodes one sentence (start character through line end, framing and checksum already checked) and
// calls the handler's operation for its type, or onUnknown. Returns the kind decoded, or Any if unknown.
SentenceKind decodeSentence(std::string_view sentence, ISentenceHandler& handler);

} // namespace os::nmea
