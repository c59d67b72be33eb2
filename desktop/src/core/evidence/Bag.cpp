// BagIt bags (RFC 8493): writing the tag files of a finished payload, and checking a bag against its manifests.
#include "core/evidence/Bag.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSet>

#include <algorithm>

namespace bagit {
namespace {

// 1 MiB: large enough that reading costs little beyond the disk itself.
constexpr qint64 kBlockSize = 1 << 20;

const QString kPayloadManifest = QStringLiteral("manifest-sha256.txt");
const QString kTagManifest = QStringLiteral("tagmanifest-sha256.txt");

bool writeTextFile(const QString& path, const QByteArray& text, QString* error) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size() || !file.commit()) {
        *error = QStringLiteral("Can't write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

QByteArray manifestText(const std::vector<Entry>& entries) {
    QByteArray text;
    for (const Entry& entry : entries)
        text += entry.sha256 + "  " + encodePath(entry.path).toUtf8() + '\n';
    return text;
}

// The entries of a manifest file; a malformed line is reported and skipped.
QHash<QString, QByteArray> readManifest(const QString& root, const QString& name, std::vector<Problem>& problems) {
    QHash<QString, QByteArray> entries;
    QFile file(QDir(root).filePath(name));
    if (!file.open(QIODevice::ReadOnly)) {
        problems.push_back({Problem::Missing, name, file.errorString()});
        return entries;
    }
    static const QRegularExpression line(QStringLiteral("^([0-9a-fA-F]{64})[ \\t]+\\*?(.+)$"));
    int number = 0;
    for (const QByteArray& raw : file.readAll().split('\n')) {
        ++number;
        const QString text = QString::fromUtf8(raw).remove(QLatin1Char('\r'));
        if (text.trimmed().isEmpty())
            continue;
        const QRegularExpressionMatch match = line.match(text);
        const QString path = match.hasMatch() ? decodePath(match.captured(2)) : QString();
        // A manifest names files inside the bag only.
        if (path.isEmpty() || QDir::isAbsolutePath(path) || path.split(QLatin1Char('/')).contains(QStringLiteral(".."))) {
            problems.push_back({Problem::Invalid, name, QStringLiteral("line %1 is not \"hash  path\" inside the bag").arg(number)});
            continue;
        }
        entries.insert(path, match.captured(1).toLower().toLatin1());
    }
    return entries;
}

void checkEntries(const QString& root, const QHash<QString, QByteArray>& entries, std::vector<Problem>& problems) {
    QStringList paths = entries.keys();
    paths.sort();
    for (const QString& path : paths) {
        const QString full = QDir(root).filePath(path);
        if (!QFileInfo(full).isFile()) {
            problems.push_back({Problem::Missing, path, QStringLiteral("listed in the manifest, not in the bag")});
            continue;
        }
        const QByteArray actual = sha256OfFile(full);
        if (actual != entries.value(path))
            problems.push_back({Problem::Changed, path,
                                actual.isEmpty() ? QStringLiteral("can't be read")
                                                 : QStringLiteral("SHA-256 is %1, the manifest says %2")
                                                       .arg(QString::fromLatin1(actual), QString::fromLatin1(entries.value(path)))});
    }
}

} // namespace

QByteArray sha256OfFile(const QString& path, const std::function<void(qint64)>& read, const std::atomic<bool>* canceled) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QCryptographicHash hash(QCryptographicHash::Sha256);
    QByteArray block(kBlockSize, Qt::Uninitialized);
    for (;;) {
        if (canceled && *canceled)
            return {};
        const qint64 count = file.read(block.data(), kBlockSize);
        if (count < 0)
            return {};
        if (count == 0)
            break;
        hash.addData(block.constData(), static_cast<int>(count));
        if (read)
            read(count);
    }
    return hash.result().toHex();
}

QString encodePath(const QString& path) {
    QString encoded = path;
    encoded.replace(QLatin1Char('%'), QLatin1String("%25"));
    encoded.replace(QLatin1Char('\n'), QLatin1String("%0A"));
    encoded.replace(QLatin1Char('\r'), QLatin1String("%0D"));
    return encoded;
}

QString decodePath(const QString& path) {
    QString decoded = path;
    decoded.replace(QLatin1String("%0A"), QLatin1String("\n"), Qt::CaseInsensitive);
    decoded.replace(QLatin1String("%0D"), QLatin1String("\r"), Qt::CaseInsensitive);
    decoded.replace(QLatin1String("%25"), QLatin1String("%"));
    return decoded;
}

bool writeTagFiles(const QString& root, const std::vector<Entry>& payload, const Info& info, QString* error) {
    const QDir dir(root);
    std::vector<Entry> sorted = payload;
    std::sort(sorted.begin(), sorted.end(), [](const Entry& a, const Entry& b) { return a.path < b.path; });
    qint64 octets = 0;
    for (const Entry& entry : sorted)
        octets += QFileInfo(dir.filePath(entry.path)).size();

    QByteArray infoText;
    for (const auto& [label, value] : info)
        infoText += label.toUtf8() + ": " + QString(value).replace(QLatin1Char('\n'), QLatin1Char(' ')).toUtf8() + '\n';
    infoText += "Payload-Oxum: " + QByteArray::number(octets) + '.' + QByteArray::number(qulonglong(sorted.size())) + '\n';

    const std::vector<std::pair<QString, QByteArray>> tagFiles = {
        {QStringLiteral("bagit.txt"), "BagIt-Version: 1.0\nTag-File-Character-Encoding: UTF-8\n"},
        {QStringLiteral("bag-info.txt"), infoText},
        {kPayloadManifest, manifestText(sorted)},
    };
    std::vector<Entry> tags;
    for (const auto& [name, text] : tagFiles) {
        if (!writeTextFile(dir.filePath(name), text, error))
            return false;
        tags.push_back({name, QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex()});
    }
    return writeTextFile(dir.filePath(kTagManifest), manifestText(tags), error);
}

std::vector<Problem> verify(const QString& root) {
    std::vector<Problem> problems;
    const QDir dir(root);
    if (!QFileInfo(dir.filePath(QStringLiteral("bagit.txt"))).isFile())
        problems.push_back({Problem::Missing, QStringLiteral("bagit.txt"), QStringLiteral("not a BagIt bag")});
    const QHash<QString, QByteArray> payload = readManifest(root, kPayloadManifest, problems);
    const QHash<QString, QByteArray> tags = readManifest(root, kTagManifest, problems);
    for (const QString& path : payload.keys())
        if (!path.startsWith(QLatin1String("data/")))
            problems.push_back({Problem::Invalid, kPayloadManifest, QStringLiteral("%1 is outside data/").arg(path)});
    checkEntries(root, payload, problems);
    checkEntries(root, tags, problems);

    // Every file in the bag must be listed: payload files in the manifest, the others in the tag manifest.
    QStringList unlisted;
    QDirIterator files(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = dir.relativeFilePath(files.next());
        const bool listed = path.startsWith(QLatin1String("data/")) ? payload.contains(path)
                                                                    : tags.contains(path) || path == kTagManifest;
        if (!listed)
            unlisted << path;
    }
    unlisted.sort();
    for (const QString& path : unlisted)
        problems.push_back({Problem::Extra, path, QStringLiteral("in the bag, not in a manifest")});
    return problems;
}

QString kindName(Problem::Kind kind) {
    switch (kind) {
    case Problem::Missing: return QStringLiteral("missing");
    case Problem::Changed: return QStringLiteral("changed");
    case Problem::Extra: return QStringLiteral("extra");
    case Problem::Invalid: return QStringLiteral("invalid");
    }
    return {};
}

} // namespace bagit
