// The PDF report of an evidence pack: what happened, where, and which files prove it.
#pragma once

#include "core/evidence/EvidenceSummary.h"

#include <QString>

// Writes an A4 PDF with QPdfWriter: a first page a claims handler reads in a minute (date, time, place,
// interval, cameras, marked moments, the note that GPS speed is indicative), the map of the interval (the
// map page's picture when given, else the track on a plain background with a scale bar and a north arrow),
// the speed plot with the marks, a table of every second of each marked moment +-5 s, and the files with
// their sizes and SHA-256. Needs a QGuiApplication for its fonts; any thread may call it.
//
// Returns false with a message in `error` (when given) if the file cannot be written; no partial file stays.
bool writeEvidenceReport(const EvidenceSummary& summary, const QString& pdfPath, QString* error = nullptr);
