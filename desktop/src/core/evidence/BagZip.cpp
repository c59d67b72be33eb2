// A finished bag as one ZIP file, the serialization BagIt describes: one top folder named like the bag.
#include "core/evidence/BagZip.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <array>
#include <cstdint>
#include <vector>

namespace bagit {
namespace {

// 1 MiB blocks: copying costs little beyond the disks themselves.
constexpr qint64 kBlockSize = 1 << 20;
// Without ZIP64 no size or offset may reach 2^32.
constexpr qint64 kZipLimit = 0xFFFFFFFFLL;
constexpr std::uint16_t kUtf8Names = 1 << 11; // general purpose flag: names are UTF-8
constexpr std::uint16_t kVersion = 20;         // 2.0: folders and stored files

const std::array<std::uint32_t, 256>& crcTable() {
    static const std::array<std::uint32_t, 256> table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t n = 0; n < 256; ++n) {
            std::uint32_t c = n;
            for (int k = 0; k < 8; ++k)
                c = c & 1 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            t[n] = c;
        }
        return t;
    }();
    return table;
}

std::uint32_t updateCrc(std::uint32_t crc, const char* data, qint64 size) {
    const auto& table = crcTable();
    crc = ~crc;
    for (qint64 i = 0; i < size; ++i)
        crc = table[(crc ^ static_cast<std::uint8_t>(data[i])) & 0xFF] ^ (crc >> 8);
    return ~crc;
}

void put16(QByteArray& out, std::uint16_t value) {
    out.append(char(value & 0xFF)).append(char(value >> 8));
}
void put32(QByteArray& out, std::uint32_t value) {
    put16(out, std::uint16_t(value & 0xFFFF));
    put16(out, std::uint16_t(value >> 16));
}

struct Member {
    QByteArray name;
    std::uint32_t crc = 0;
    std::uint32_t size = 0;
    std::uint32_t offset = 0;
    std::uint16_t dosTime = 0;
    std::uint16_t dosDate = 0;
};

// The local header, written before the data with the CRC and sizes in place (the file was read once before).
QByteArray localHeader(const Member& m) {
    QByteArray h;
    put32(h, 0x04034b50);
    put16(h, kVersion);
    put16(h, kUtf8Names);
    put16(h, 0); // stored
    put16(h, m.dosTime);
    put16(h, m.dosDate);
    put32(h, m.crc);
    put32(h, m.size);
    put32(h, m.size);
    put16(h, std::uint16_t(m.name.size()));
    put16(h, 0);
    return h + m.name;
}

QByteArray centralHeader(const Member& m) {
    QByteArray h;
    put32(h, 0x02014b50);
    put16(h, (3 << 8) | kVersion); // made on Unix
    put16(h, kVersion);
    put16(h, kUtf8Names);
    put16(h, 0);
    put16(h, m.dosTime);
    put16(h, m.dosDate);
    put32(h, m.crc);
    put32(h, m.size);
    put32(h, m.size);
    put16(h, std::uint16_t(m.name.size()));
    put16(h, 0); // extra
    put16(h, 0); // comment
    put16(h, 0); // disk
    put16(h, 0); // internal attributes
    put32(h, std::uint32_t(0100644) << 16); // a regular file, rw-r--r--
    put32(h, m.offset);
    return h + m.name;
}

} // namespace

bool writeZip(const QString& root, const QString& zipPath, QString* error, const std::atomic<bool>* canceled) {
    if (QFileInfo::exists(zipPath)) {
        *error = QStringLiteral("%1 already exists").arg(zipPath);
        return false;
    }
    const QDir bag(root);
    QStringList paths;
    QDirIterator files(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext())
        paths << bag.relativeFilePath(files.next());
    paths.sort();

    QSaveFile zip(zipPath);
    zip.setDirectWriteFallback(false);
    if (!zip.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("Can't write %1: %2").arg(zipPath, zip.errorString());
        return false;
    }
    std::vector<Member> members;
    std::vector<char> block(kBlockSize);
    const QString top = QFileInfo(QDir::cleanPath(bag.absolutePath())).fileName();
    for (const QString& path : paths) {
        QFile file(bag.filePath(path));
        if (file.size() > kZipLimit || zip.pos() > kZipLimit) {
            *error = QStringLiteral("The pack is too large for a ZIP file without ZIP64 (4 GiB)");
            return false; // the QSaveFile is discarded
        }
        if (!file.open(QIODevice::ReadOnly)) {
            *error = QStringLiteral("Can't read %1: %2").arg(file.fileName(), file.errorString());
            return false;
        }
        Member member;
        member.name = (top + QLatin1Char('/') + path).toUtf8();
        member.size = std::uint32_t(file.size());
        member.offset = std::uint32_t(zip.pos());
        const QDateTime modified = QFileInfo(file).lastModified();
        member.dosTime = std::uint16_t((modified.time().hour() << 11) | (modified.time().minute() << 5) |
                                       (modified.time().second() / 2));
        member.dosDate = std::uint16_t((std::max(0, modified.date().year() - 1980) << 9) |
                                       (modified.date().month() << 5) | modified.date().day());
        // Read once for the CRC, then again while writing: the header comes first and must hold it.
        for (qint64 count; (count = file.read(block.data(), kBlockSize)) > 0;)
            member.crc = updateCrc(member.crc, block.data(), count);
        file.seek(0);
        bool ok = zip.write(localHeader(member)) >= 0;
        qint64 written = 0;
        for (qint64 count; ok && (count = file.read(block.data(), kBlockSize)) > 0;) {
            if (canceled && *canceled) {
                *error = QStringLiteral("Canceled");
                return false;
            }
            ok = zip.write(block.data(), count) == count;
            written += count;
        }
        if (!ok || written != member.size) {
            *error = QStringLiteral("Can't write %1: %2").arg(zipPath, zip.errorString());
            return false;
        }
        members.push_back(member);
    }
    QByteArray central;
    for (const Member& member : members)
        central += centralHeader(member);
    QByteArray end;
    put32(end, 0x06054b50);
    put16(end, 0);
    put16(end, 0);
    put16(end, std::uint16_t(members.size()));
    put16(end, std::uint16_t(members.size()));
    put32(end, std::uint32_t(central.size()));
    put32(end, std::uint32_t(zip.pos()));
    put16(end, 0);
    if (members.size() > 0xFFFF || zip.write(central + end) != central.size() + end.size() || !zip.commit()) {
        *error = QStringLiteral("Can't write %1: %2").arg(zipPath, zip.errorString());
        return false;
    }
    return true;
}

} // namespace bagit
