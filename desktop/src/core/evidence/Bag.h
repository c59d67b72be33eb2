// BagIt bags (RFC 8493): writing the tag files of a finished payload, and checking a bag against its manifests.
#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <functional>
#include <utility>
#include <vector>

namespace bagit {

// A payload file: its path relative to the bag's root ("data/originals/FILE0001.MP4") and its SHA-256 in
// lower-case hex.
struct Entry {
    QString path;
    QByteArray sha256;
};

// A label and value of bag-info.txt, in the order written.
using Info = std::vector<std::pair<QString, QString>>;

// SHA-256 of a file in lower-case hex, read in large blocks; `read` (when given) is told how many bytes
// each block held. Empty when the file cannot be read or `canceled` became true.
QByteArray sha256OfFile(const QString& path, const std::function<void(qint64)>& read = {},
                        const std::atomic<bool>* canceled = nullptr);

// Writes bagit.txt, bag-info.txt (the given labels, then Payload-Oxum), manifest-sha256.txt over the
// payload and tagmanifest-sha256.txt over the three. The payload files are already in data/. False with
// the reason in `error` when a tag file cannot be written.
//
//   bagit::writeTagFiles(root, {{"data/clips/front.mp4", hash}}, {{"Bag-Software-Agent", "Reelvue 1.4"}}, &error);
bool writeTagFiles(const QString& root, const std::vector<Entry>& payload, const Info& info, QString* error);

// A manifest line's path: "%", CR and LF percent-encoded, as RFC 8493 asks; decodePath() undoes it.
QString encodePath(const QString& path);
QString decodePath(const QString& path);

struct Problem {
    enum Kind { Missing, Changed, Extra, Invalid };
    Kind kind;
    QString path; // relative to the bag's root; the tag file itself for Invalid
    QString detail;
};

// Checks every file of both manifests against its hash, and that no payload or tag file is missing or
// unlisted. No problem means the bag is whole.
std::vector<Problem> verify(const QString& root);

// "missing", "changed", "extra", "invalid".
QString kindName(Problem::Kind kind);

} // namespace bagit
