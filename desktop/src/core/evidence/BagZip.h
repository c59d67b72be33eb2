// A finished bag as one ZIP file, the serialization BagIt describes: one top folder named like the bag.
#pragma once

#include <QString>

#include <atomic>

namespace bagit {

// Writes `zipPath` (which must not exist) holding every file of the bag at `root` under "<bag name>/", stored
// without compression: the recordings are compressed already, and a stored file's bytes stay the same bytes.
// Sizes and offsets are limited to 4 GiB (no ZIP64). False with the reason in `error`; no partial file stays.
//
//   bagit::writeZip("/home/me/incident", "/home/me/incident.zip", &error);
bool writeZip(const QString& root, const QString& zipPath, QString* error, const std::atomic<bool>* canceled = nullptr);

} // namespace bagit
