// The receiver of decoded sentences: one operation per recognised type, all doing nothing by default.
#pragma once

#include "os/nmea/Sentences.h"

#include <string_view>

namespace os::nmea {

// Talker and type of a sentence, or manufacturer and type of a proprietary one ("P" + manufacturer).
struct SentenceAddress {
    std::string_view talker;       // "GP", "GN", ...; empty for proprietary sentences
    std::string_view manufacturer; // "GRM", ...; empty for standard sentences
    std::string_view type;         // "RMC", "Z", ...
};

// Keep the order of the operations: handlers built elsewhere depend on it.
class ISentenceHandler {
public:
    virtual ~ISentenceHandler() = default;
    virtual void onGga(const GgaSentence&) {}
    virtual void onGll(const GllSentence&) {}
    virtual void onGsa(const GsaSentence&) {}
    virtual void onGst(const GstSentence&) {}
    virtual void onGsv(const GsvSentence&) {}
    virtual void onRmc(const RmcSentence&) {}
    virtual void onVtg(const VtgSentence&) {}
    virtual void onHdg(const HdgSentence&) {}
    virtual void onZda(const ZdaSentence&) {}
    virtual void onDpt(const DptSentence&) {}
    virtual void onDbt(const DbtSentence&) {}
    virtual void onMtw(const MtwSentence&) {}
    // A sentence that framed and passed its checksum but whose type is not recognised.
    virtual void onUnknown(const SentenceAddress&) {}
    // A sentence that framed but whose checksum did not match; it is skipped.
    virtual void onChecksumMismatch() {}
    virtual void onPgrmz(const PgrmzSentence&) {}
};

} // namespace os::nmea
