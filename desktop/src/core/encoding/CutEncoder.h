// The walk over a cut's files that the stream copy and the re-encode share: which files, opening them,
// seeking the first, progress, cancel, the three levels of error handling and the output that takes the
// target's place only when whole.
#pragma once

#include "core/BaseEncoder.h"

#include <QDateTime>
#include <QString>

#include <cstdint>

struct AVFormatContext;
struct AVPacket;

namespace encoding {

// Where the cut lies in one file, in milliseconds from the file's start.
struct FileSpan {
    double startMs = 0; // 0 unless the cut begins inside this file
    double endMs = 0;   // where the cut's end falls; may lie past the file's end
    QDateTime begin;    // the item's begin time
};

// What a way of writing a cut supplies per file and for the output. One writer serves one run, in the
// encoder's thread. Every failure is thrown, a TargetError when the place written to failed.
class CutWriter {
public:
    virtual ~CutWriter() = default;
    // Opens what a file needs beyond its demuxer; throwing skips the file as one that did not open.
    virtual void prepareInput(AVFormatContext* input, const QString& path) = 0;
    virtual bool hasOutput() const = 0;
    // Creates the output from the first input that opened: the container follows `targetPath`'s
    // extension, the bytes go to `writePath`.
    virtual void createOutput(AVFormatContext* input, const QString& targetPath, const QString& writePath) = 0;
    // av_seek_frame's flags for the file that holds the cut's start.
    virtual int seekFlags() const = 0;
    virtual void beginFile(AVFormatContext* input, const QString& path, const FileSpan& span) = 0;
    // One packet of the current file; false once the cut's end is reached in it.
    virtual bool writePacket(AVPacket* packet) = 0;
    // A read error other than the end of the file: throw to fail the run, return to end the file.
    virtual void readFailed(int error) = 0;
    // After the current file's last packet; a cancelled run skips the draining.
    virtual void endFile(bool canceled) = 0;
    // Output time written so far, in milliseconds.
    virtual double writtenMs() const = 0;
    // Drains (unless cancelled) and writes the trailer.
    virtual void finishOutput(bool canceled) = 0;
    // Frees everything; the file is closed afterwards. Safe to call more than once.
    virtual void closeOutput() = 0;
};

// The log texts of one encoder, each with the placeholders shown.
struct CutTexts {
    const char* logger;
    const char* start;      // "Start remuxing to '{}'"
    const char* file;       // "Remuxe from '{}'"
    const char* loopFailed; // "Caught exception in remuxing loop on '{}': {}"
    const char* failed;     // "Failed to remuxe to '{}': {}"
    const char* finished;   // "Remuxing to '{}' has been finished ({} ms)"
};

} // namespace encoding

// An encoder of cuts; Remuxer and Coder run the walk with their own writer. Lives in a worker thread like
// every BaseEncoder; the accessors below are read after its end signal.
class CutEncoder : public BaseEncoder {
public:
    using BaseEncoder::BaseEncoder;

    // The cut asked (the items' overlap with the interval) and the output time the last run wrote, in ms.
    std::int64_t askedMs() const { return m_askedMs; }
    std::int64_t writtenMs() const { return m_writtenMs; }
    // Less than asked was written, by more than the key-frame slack of a stream copy: recordings that end
    // early (damaged, truncated) or that could not be read.
    bool wroteLessThanAsked() const;

protected:
    void runCut(encoding::CutWriter& writer, const encoding::CutTexts& texts);

private:
    std::int64_t m_askedMs = 0;
    std::int64_t m_writtenMs = 0;
};
