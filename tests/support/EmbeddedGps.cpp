// Writes dash-camera GPS stores into small videos, and reads them back with exiftool.
#include "support/EmbeddedGps.h"

#include <QFile>
#include <QProcess>
#include <QtEndian>

#include <cmath>
#include <cstring>
#include <functional>

namespace testsupport::gps {
namespace {

QByteArray u32be(quint32 v) { QByteArray b(4, 0); qToBigEndian(v, b.data()); return b; }
QByteArray u16be(quint16 v) { QByteArray b(2, 0); qToBigEndian(v, b.data()); return b; }
template <typename T>
void putLe(QByteArray& b, int offset, T v) { qToLittleEndian(v, b.data() + offset); }
void putFloat(QByteArray& b, int offset, float v) { quint32 bits; std::memcpy(&bits, &v, 4); putLe(b, offset, bits); }
void putDouble(QByteArray& b, int offset, double v) { quint64 bits; std::memcpy(&bits, &v, 8); putLe(b, offset, bits); }
QByteArray leFloat(float v) { QByteArray b(4, 0); putFloat(b, 0, v); return b; }
QByteArray leDouble(double v) { QByteArray b(8, 0); putDouble(b, 0, v); return b; }
QByteArray leU32(quint32 v) { QByteArray b(4, 0); putLe(b, 0, v); return b; }

QByteArray box(const char* type, const QByteArray& payload) { return u32be(8 + payload.size()) + type + payload; }
QByteArray fullBox(const char* type, quint32 versionFlags, const QByteArray& payload) {
    return box(type, u32be(versionFlags) + payload);
}

// degrees*100+minutes, the NMEA way.
double degreesMinutes(double degrees) {
    const double magnitude = std::fabs(degrees);
    const double whole = std::floor(magnitude);
    return whole * 100.0 + (magnitude - whole) * 60.0;
}

struct Moov {
    qint64 offset = -1;
    qint64 size = 0;
};

Moov lastMoov(const QByteArray& file) {
    qint64 at = 0;
    Moov moov;
    while (at + 8 <= file.size()) {
        const qint64 size = qFromBigEndian<quint32>(file.constData() + at);
        if (size < 8)
            return {};
        if (file.mid(int(at) + 4, 4) == "moov")
            moov = {at, size};
        at += size;
    }
    return moov.offset >= 0 && moov.offset + moov.size == file.size() ? moov : Moov{};
}

// The offset of the box of `type` among the boxes between `begin` and `end`, or -1.
qint64 findChild(const QByteArray& file, qint64 begin, qint64 end, const char* type) {
    for (qint64 at = begin; at + 8 <= end;) {
        const qint64 size = qFromBigEndian<quint32>(file.constData() + at);
        if (size < 8)
            return -1;
        if (file.mid(int(at) + 4, 4) == type)
            return at;
        at += size;
    }
    return -1;
}

// Puts `children` into moov right after its mvhd (where a camera writes its own boxes, before any track) and
// `tail` (new top-level boxes) after moov; both are made knowing where the tail starts.
bool extend(const QString& path, const std::function<QByteArray(qint64 tailOffset)>& children,
            const std::function<QByteArray(qint64 tailOffset)>& tail) {
    QByteArray file = readAll(path);
    const Moov moov = lastMoov(file);
    if (moov.offset < 0)
        return false;
    const qint64 mvhd = findChild(file, moov.offset + 8, moov.offset + moov.size, "mvhd");
    if (mvhd < 0)
        return false;
    const qint64 insertAt = mvhd + qFromBigEndian<quint32>(file.constData() + mvhd);
    const qint64 childSize = children(0).size(); // sizes do not depend on the offsets
    const qint64 tailOffset = moov.offset + moov.size + childSize;
    const QByteArray added = children(tailOffset);
    QByteArray out = file.left(int(moov.offset));
    out += u32be(quint32(moov.size + added.size())) + file.mid(int(moov.offset) + 4, int(insertAt - moov.offset) - 4);
    out += added + file.mid(int(insertAt), int(moov.offset + moov.size - insertAt));
    out += tail(tailOffset);
    return writeAll(path, out);
}

// Writes the creation time of mvhd (version 0: 32-bit seconds since 1904).
bool setMovieCreationTime(const QString& path, const QDateTime& utc) {
    QByteArray file = readAll(path);
    const qint64 moov = findChild(file, 0, file.size(), "moov");
    const qint64 mvhd = moov < 0 ? -1 : findChild(file, moov + 8, moov + qFromBigEndian<quint32>(file.constData() + moov), "mvhd");
    if (mvhd < 0 || !utc.isValid() || file[int(mvhd) + 8] != 0)
        return false;
    qToBigEndian<quint32>(quint32(utc.toSecsSinceEpoch() + 2082844800), file.data() + mvhd + 12);
    return writeAll(path, file);
}

// Puts a top-level box right after ftyp, before the media data, moving the chunk offsets of every track by
// its size (some cameras write their boxes there, and exiftool looks for them there only).
bool insertAfterFtyp(const QString& path, const QByteArray& inserted) {
    QByteArray file = readAll(path);
    const Moov moov = lastMoov(file);
    const qint64 ftyp = findChild(file, 0, file.size(), "ftyp");
    if (moov.offset < 0 || ftyp != 0)
        return false;
    const std::function<void(qint64, qint64)> shift = [&](qint64 begin, qint64 end) {
        for (qint64 at = begin; at + 8 <= end;) {
            const qint64 size = qFromBigEndian<quint32>(file.constData() + at);
            const QByteArray type = file.mid(int(at) + 4, 4);
            if (type == "trak" || type == "mdia" || type == "minf" || type == "stbl")
                shift(at + 8, at + size);
            else if (type == "stco")
                for (quint32 i = 0, n = qFromBigEndian<quint32>(file.constData() + at + 12); i < n; ++i) {
                    char* entry = file.data() + at + 16 + 4 * i;
                    qToBigEndian<quint32>(qFromBigEndian<quint32>(entry) + quint32(inserted.size()), entry);
                }
            at += size;
        }
    };
    shift(moov.offset + 8, moov.offset + moov.size);
    const qint64 ftypEnd = qFromBigEndian<quint32>(file.constData());
    return writeAll(path, file.left(int(ftypEnd)) + inserted + file.mid(int(ftypEnd)));
}

// A trak of one data track whose samples lie one after another from `dataOffset`, one chunk each.
QByteArray dataTrak(const char* handler, const QByteArray& sampleEntry, const std::vector<QByteArray>& samples,
                    quint32 timescale, quint32 sampleDelta, qint64 dataOffset, quint32 trackId) {
    const quint32 count = quint32(samples.size());
    const QByteArray tkhd = fullBox("tkhd", 3, u32be(0) + u32be(0) + u32be(trackId) + u32be(0) +
                                                  u32be(count * sampleDelta * 1000 / timescale) + QByteArray(60, 0) +
                                                  u32be(0) + u32be(0));
    const QByteArray mdhd = fullBox("mdhd", 0, u32be(0) + u32be(0) + u32be(timescale) + u32be(count * sampleDelta) +
                                                   u16be(0x55c4) + u16be(0));
    const QByteArray hdlr = fullBox("hdlr", 0, u32be(0) + QByteArray(handler, 4) + QByteArray(12, 0) + QByteArray("GPS\0", 4));
    const QByteArray stsd = fullBox("stsd", 0, u32be(1) + sampleEntry);
    const QByteArray stts = fullBox("stts", 0, u32be(1) + u32be(count) + u32be(sampleDelta));
    const QByteArray stsc = fullBox("stsc", 0, u32be(1) + u32be(1) + u32be(1) + u32be(1));
    QByteArray sizes, offsets;
    qint64 at = dataOffset;
    for (const QByteArray& sample : samples) {
        sizes += u32be(quint32(sample.size()));
        offsets += u32be(quint32(at));
        at += sample.size();
    }
    const QByteArray stsz = fullBox("stsz", 0, u32be(0) + u32be(count) + sizes);
    const QByteArray stco = fullBox("stco", 0, u32be(count) + offsets);
    const QByteArray stbl = box("stbl", stsd + stts + stsc + stsz + stco);
    const QByteArray dinf = box("dinf", fullBox("dref", 0, u32be(1) + fullBox("url ", 1, {})));
    const QByteArray minf = box("minf", fullBox("nmhd", 0, {}) + dinf + stbl);
    return box("trak", tkhd + box("mdia", mdhd + hdlr + minf));
}

// A sample entry: six reserved bytes and a data reference index, then what the format adds.
QByteArray sampleEntry(const char* format, const QByteArray& extra = {}) {
    return box(format, QByteArray(6, 0) + u16be(1) + extra);
}

bool addTrack(const QString& path, const char* handler, const QByteArray& entry, const std::vector<QByteArray>& samples,
              quint32 timescale, quint32 sampleDelta) {
    QByteArray data;
    for (const QByteArray& sample : samples)
        data += sample;
    return extend(
        path, [&](qint64 tail) { return dataTrak(handler, entry, samples, timescale, sampleDelta, tail + 8, 100); },
        [&](qint64) { return box("mdat", data); });
}

QByteArray checksummed(const QByteArray& body) {
    unsigned char sum = 0;
    for (char c : body)
        sum ^= static_cast<unsigned char>(c);
    return "$" + body + "*" + QByteArray::number(sum, 16).rightJustified(2, '0').toUpper() + "\r\n";
}

QByteArray klv(const char* key, char type, int size, int count, const QByteArray& value) {
    QByteArray item = QByteArray(key, 4) + type + char(size) + u16be(quint16(count)) + value;
    while (item.size() % 4)
        item += '\0';
    return item;
}

} // namespace

std::vector<Fix> drive(const QDateTime& startUtc, int count) {
    std::vector<Fix> fixes;
    for (int i = 0; i < count; ++i) {
        Fix fix;
        fix.utc = startUtc.addSecs(i).toUTC();
        fix.latitude = -33.8671 + i * 0.0001;
        fix.longitude = -70.6402 + i * 0.00012;
        fix.speedKmh = 50.0 + i * 0.5;
        fix.course = 45.0 + i;
        fix.altitude = 520.0 + i;
        fix.accelerationG[0] = 0.125 * (i % 3);
        fix.accelerationG[1] = -0.25;
        fix.accelerationG[2] = 1.0;
        fixes.push_back(fix);
    }
    return fixes;
}

QByteArray freeGpsBlock(FreeGpsLayout layout, const Fix& fix, int blockSize) {
    QByteArray b(blockSize, '\0');
    qToBigEndian<quint32>(quint32(blockSize), b.data());
    std::memcpy(b.data() + 4, "freeGPS ", 8);
    const QDate d = fix.utc.date();
    const QTime t = fix.utc.time();
    const char status = fix.valid ? 'A' : 'V';
    const char ns = fix.latitude < 0 ? 'S' : 'N';
    const char ew = fix.longitude < 0 ? 'W' : 'E';
    const double knots = fix.speedKmh / 1.852;
    switch (layout) {
    case FreeGpsLayout::Plain: {
        const quint32 fields[6] = {quint32(t.hour()), quint32(t.minute()), quint32(t.second()), quint32(d.year() - 2000),
                                   quint32(d.month()), quint32(d.day())};
        for (int i = 0; i < 6; ++i)
            putLe(b, 0x30 + 4 * i, fields[i]);
        b[0x48] = status;
        b[0x49] = ns;
        b[0x4a] = ew;
        putFloat(b, 0x4c, float(degreesMinutes(fix.latitude)));
        putFloat(b, 0x50, float(degreesMinutes(fix.longitude)));
        putFloat(b, 0x54, float(knots));
        putFloat(b, 0x58, float(fix.course));
        break;
    }
    case FreeGpsLayout::Compact: {
        const quint32 fields[6] = {quint32(t.hour()), quint32(t.minute()), quint32(t.second()), quint32(d.year() - 2000),
                                   quint32(d.month()), quint32(d.day())};
        for (int i = 0; i < 6; ++i)
            putLe(b, 0x10 + 4 * i, fields[i]);
        b[0x28] = status;
        b[0x29] = ns;
        b[0x2a] = ew;
        putFloat(b, 0x2c, float(degreesMinutes(fix.latitude)));
        putFloat(b, 0x30, float(degreesMinutes(fix.longitude)));
        putFloat(b, 0x34, float(knots));
        putFloat(b, 0x38, float(fix.course));
        for (int i = 0; i < 3; ++i)
            putLe(b, 0x3c + 4 * i, qint32(std::lround(fix.accelerationG[i] * 256)));
        break;
    }
    case FreeGpsLayout::Double: {
        putLe(b, 0x30, quint32(t.hour()));
        putLe(b, 0x34, quint32(t.minute()));
        putLe(b, 0x38, quint32(t.second()));
        b[0x3c] = status;
        putDouble(b, 0x40, degreesMinutes(fix.latitude));
        b[0x48] = ns;
        putDouble(b, 0x50, degreesMinutes(fix.longitude));
        b[0x58] = ew;
        putDouble(b, 0x60, knots);
        putDouble(b, 0x68, fix.course);
        putLe(b, 0x70, quint32(d.year() - 2000));
        putLe(b, 0x74, quint32(d.month()));
        putLe(b, 0x78, quint32(d.day()));
        for (int i = 0; i < 3; ++i)
            putLe(b, 0x7c + 4 * i, qint32(std::lround(fix.accelerationG[i] * 1000)));
        break;
    }
    }
    return b;
}

bool addFreeGpsListed(const QString& path, FreeGpsLayout layout, const std::vector<Fix>& fixes) {
    QByteArray blocks;
    for (const Fix& fix : fixes)
        blocks += freeGpsBlock(layout, fix);
    return extend(
        path,
        [&](qint64 tail) {
            QByteArray list = u32be(0x101) + u32be(quint32(fixes.size()));
            qint64 at = tail + 8;
            for (const Fix& fix : fixes) {
                const int size = freeGpsBlock(layout, fix).size();
                list += u32be(quint32(at)) + u32be(quint32(size));
                at += size;
            }
            return box("gps ", list);
        },
        [&](qint64) { return box("mdat", blocks); });
}

bool addFreeGpsInMdat(const QString& path, FreeGpsLayout layout, const std::vector<Fix>& fixes) {
    QByteArray data;
    for (const Fix& fix : fixes)
        data += QByteArray(3000, '\x55') + freeGpsBlock(layout, fix, 0x8000); // media bytes between the blocks
    QByteArray file = readAll(path);
    return writeAll(path, file + box("mdat", data));
}

QByteArray nmeaOf(const Fix& fix) {
    const QByteArray time = fix.utc.toString("HHmmss.00").toLatin1();
    const QByteArray date = fix.utc.toString("ddMMyy").toLatin1();
    const auto coordinate = [](double value, int width) {
        const double dm = degreesMinutes(value);
        return QByteArray::number(dm, 'f', 4).rightJustified(width + 5, '0');
    };
    const QByteArray position = coordinate(fix.latitude, 4) + (fix.latitude < 0 ? ",S," : ",N,") +
                                coordinate(fix.longitude, 5) + (fix.longitude < 0 ? ",W" : ",E");
    const QByteArray knots = QByteArray::number(fix.speedKmh / 1.852, 'f', 3);
    QByteArray text = checksummed("GPRMC," + time + (fix.valid ? ",A," : ",V,") + position + "," + knots + "," +
                                  QByteArray::number(fix.course, 'f', 2) + "," + date + ",,,A");
    text += checksummed("GPGGA," + time + "," + position + ",1,08,0.9," + QByteArray::number(fix.altitude, 'f', 1) +
                        ",M,0.0,M,,");
    return text;
}

bool addNmeaTextTrack(const QString& path, const std::vector<Fix>& fixes) {
    std::vector<QByteArray> samples;
    for (const Fix& fix : fixes)
        samples.push_back(nmeaOf(fix));
    return addTextTrack(path, samples);
}

bool addTextTrack(const QString& path, const std::vector<QByteArray>& samples) {
    std::vector<QByteArray> framed;
    for (const QByteArray& text : samples)
        framed.push_back(u16be(quint16(text.size())) + text);
    // tx3g sample entry: display flags, justification, colour, default text box and style.
    const QByteArray extra = u32be(0) + QByteArray(2, 0) + QByteArray(4, 0) + QByteArray(8, 0) + QByteArray(12, 0);
    return addTrack(path, "text", sampleEntry("tx3g", extra), framed, 1000, 1000);
}

bool addNmeaBox(const QString& path, const std::vector<Fix>& fixes) {
    QByteArray log;
    for (const Fix& fix : fixes)
        for (const QByteArray& line : nmeaOf(fix).split('\n'))
            if (!line.isEmpty())
                log += "[" + QByteArray::number(fix.utc.toMSecsSinceEpoch()) + "]" + line + "\n";
    return writeAll(path, readAll(path) + box("free", box("gps ", log)));
}

bool addGpsBox(const QString& path, const std::vector<Fix>& fixes) {
    QByteArray records;
    for (std::size_t i = 0; i < fixes.size(); ++i) {
        const Fix& fix = fixes[i];
        QByteArray r(36, '\0');
        putLe(r, 0, quint32(1));
        putLe(r, 4, quint32(1));
        putLe(r, 8, quint32(i));
        putLe(r, 12, quint32(std::lround(fix.speedKmh * 1000)));
        r[16] = fix.latitude < 0 ? 'S' : 'N';
        putLe(r, 17, quint32(std::lround(degreesMinutes(fix.latitude) * 1000)));
        r[21] = fix.longitude < 0 ? 'W' : 'E';
        putLe(r, 22, quint32(std::lround(degreesMinutes(fix.longitude) * 1000)));
        records += r;
    }
    return insertAfterFtyp(path, box("GPS ", records + QByteArray(36, '\0')));
}

QByteArray gpmfPayload(const Fix& fix, bool gps9) {
    QByteArray stream;
    if (gps9) {
        const QDateTime y2000(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC);
        const qint64 since = y2000.secsTo(fix.utc);
        QByteArray value;
        value += u32be(quint32(qint32(std::lround(fix.latitude * 1e7))));
        value += u32be(quint32(qint32(std::lround(fix.longitude * 1e7))));
        value += u32be(quint32(qint32(std::lround(fix.altitude * 1000))));
        value += u32be(quint32(qint32(std::lround(fix.speedKmh / 3.6 * 1000))));
        value += u32be(quint32(qint32(std::lround(fix.speedKmh / 3.6 * 100))));
        value += u32be(quint32(since / 86400));
        value += u32be(quint32((since % 86400) * 1000));
        value += u16be(quint16(123)) + u16be(quint16(fix.valid ? 3 : 0));
        const QByteArray scale = u32be(10000000) + u32be(10000000) + u32be(1000) + u32be(1000) + u32be(100) +
                                 u32be(1) + u32be(1000) + u32be(100) + u32be(1);
        stream += klv("SCAL", 'l', 4, 9, scale);
        stream += klv("TYPE", 'c', 9, 1, "lllllllSS");
        stream += klv("GPS9", '?', 32, 1, value);
    } else {
        QByteArray samples;
        // Two fixes in the second (cameras write 10 to 18): the second one must not make another position.
        for (int k = 0; k < 2; ++k) {
            samples += u32be(quint32(qint32(std::lround(fix.latitude * 1e7))));
            samples += u32be(quint32(qint32(std::lround(fix.longitude * 1e7))));
            samples += u32be(quint32(qint32(std::lround(fix.altitude * 1000))));
            samples += u32be(quint32(qint32(std::lround(fix.speedKmh / 3.6 * 1000))));
            samples += u32be(quint32(qint32(std::lround(fix.speedKmh / 3.6 * 100))));
        }
        stream += klv("GPSF", 'L', 4, 1, u32be(fix.valid ? 3 : 0));
        stream += klv("GPSU", 'U', 16, 1, fix.utc.toString("yyMMddHHmmss.zzz").toLatin1());
        stream += klv("GPSP", 'S', 2, 1, u16be(123));
        stream += klv("SCAL", 'l', 4, 5, u32be(10000000) + u32be(10000000) + u32be(1000) + u32be(1000) + u32be(100));
        stream += klv("GPS5", 'l', 20, 2, samples);
    }
    QByteArray accel;
    for (int i = 0; i < 3; ++i)
        accel += u16be(quint16(qint16(std::lround(fix.accelerationG[i] * 9.80665 * 100))));
    const QByteArray accelStream = klv("SCAL", 's', 2, 1, u16be(100)) + klv("ACCL", 's', 6, 1, accel);
    const QByteArray device = klv("DVID", 'L', 4, 1, u32be(1)) + klv("STRM", 0, 1, stream.size(), stream) +
                              klv("STRM", 0, 1, accelStream.size(), accelStream);
    return klv("DEVC", 0, 1, device.size(), device);
}

bool addGpmfTrack(const QString& path, const std::vector<Fix>& fixes, bool gps9) {
    std::vector<QByteArray> samples;
    for (const Fix& fix : fixes)
        samples.push_back(gpmfPayload(fix, gps9));
    return addTrack(path, "meta", sampleEntry("gpmd"), samples, 1000, 1000);
}

bool addCammTrack(const QString& path, const std::vector<Fix>& fixes) {
    std::vector<QByteArray> samples;
    for (const Fix& fix : fixes) {
        QByteArray gps = QByteArray(2, 0) + QByteArray(1, 6) + QByteArray(1, 0); // reserved, type 6
        const double gpsSeconds = double(fix.utc.toSecsSinceEpoch() - 315964800 + 18);
        gps += leDouble(gpsSeconds) + leU32(fix.valid ? 3 : 0) + leDouble(fix.latitude) + leDouble(fix.longitude) +
               leFloat(float(fix.altitude)) + leFloat(5) + leFloat(8);
        const double radians = fix.course * 3.14159265358979323846 / 180.0;
        const double ms = fix.speedKmh / 3.6;
        gps += leFloat(float(ms * std::sin(radians))) + leFloat(float(ms * std::cos(radians))) + leFloat(0) + leFloat(1);
        samples.push_back(gps);
        QByteArray accel = QByteArray(2, 0) + QByteArray(1, 3) + QByteArray(1, 0); // reserved, type 3
        for (double g : fix.accelerationG)
            accel += leFloat(float(g * 9.80665));
        samples.push_back(accel);
    }
    // Two packets a second: each sample lasts half a second. The movie is dated as a camera dates it, which
    // tells exiftool that the times count from the GPS epoch.
    return addTrack(path, "meta", sampleEntry("camm"), samples, 1000, 500) &&
           setMovieCreationTime(path, fixes.empty() ? QDateTime() : fixes.front().utc);
}

std::vector<std::map<QString, QString>> exiftoolDocuments(const QString& path) {
    QProcess process;
    process.start("exiftool", {"-ee", "-n", "-api", "largefilesupport=1", "-s", "-G3", "-GPS*", "-Accelerometer*", path});
    process.waitForFinished(60000);
    std::vector<std::map<QString, QString>> documents;
    for (const QByteArray& line : process.readAllStandardOutput().split('\n')) {
        // [Doc3]          GPSLatitude                     : -33.8669
        if (!line.startsWith("[Doc"))
            continue;
        const int close = line.indexOf(']');
        const int index = line.mid(4, close - 4).toInt();
        const int colon = line.indexOf(':', close);
        if (index <= 0 || colon < 0)
            continue;
        if (int(documents.size()) < index)
            documents.resize(index);
        documents[index - 1][QString::fromLatin1(line.mid(close + 1, colon - close - 1).trimmed())] =
            QString::fromLatin1(line.mid(colon + 1).trimmed());
    }
    return documents;
}

QByteArray readAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString& path, const QByteArray& bytes) {
    QFile::remove(path); // a hard-linked copy of a shared video keeps the original unchanged
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

} // namespace testsupport::gps
