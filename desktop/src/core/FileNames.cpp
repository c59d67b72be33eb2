// The byte-keeping locale codec and the escaping of file names for text output.
#include "core/FileNames.h"

#include <QTextCodec>

namespace {

constexpr char16_t kEscapedByteBase = 0xDC00; // a byte b >= 0x80 that is not UTF-8 becomes U+DC00 + b

bool isEscapedByte(char16_t c) { return c >= 0xDC80 && c <= 0xDCFF; }

QString hexEscape(unsigned byte) {
    return QStringLiteral("\\x") + QStringLiteral("%1").arg(byte, 2, 16, QLatin1Char('0')).toUpper();
}

// UTF-8 both ways, except that bytes which are not UTF-8 become unpaired surrogates and back.
class ByteKeepingUtf8Codec : public QTextCodec {
public:
    QByteArray name() const override { return QByteArrayLiteral("UTF-8 (bytes kept)"); }
    // Outside the range of registered MIBenums: a private codec.
    int mibEnum() const override { return -106; }

protected:
    QString convertToUnicode(const char* input, int length, ConverterState*) const override {
        const auto* bytes = reinterpret_cast<const unsigned char*>(input);
        QString text;
        text.reserve(length);
        int validFrom = 0; // start of the run of UTF-8 not yet converted
        for (int i = 0; i < length;) {
            const int size = sequenceLength(bytes + i, length - i);
            if (size > 0) {
                i += size;
                continue;
            }
            text += QString::fromUtf8(input + validFrom, i - validFrom);
            text += QChar(static_cast<char16_t>(kEscapedByteBase + bytes[i]));
            validFrom = ++i;
        }
        text += QString::fromUtf8(input + validFrom, length - validFrom);
        return text;
    }

    QByteArray convertFromUnicode(const QChar* input, int length, ConverterState*) const override {
        QByteArray bytes;
        bytes.reserve(length);
        int plainFrom = 0; // start of the run of ordinary text not yet converted
        for (int i = 0; i < length; ++i) {
            if (!isEscapedByte(input[i].unicode()))
                continue;
            bytes += QString::fromRawData(input + plainFrom, i - plainFrom).toUtf8();
            bytes += static_cast<char>(input[i].unicode() - kEscapedByteBase);
            plainFrom = i + 1;
        }
        bytes += QString::fromRawData(input + plainFrom, length - plainFrom).toUtf8();
        return bytes;
    }

private:
    // The length of the well-formed UTF-8 sequence at `bytes`, or 0 when there is none.
    static int sequenceLength(const unsigned char* bytes, int available) {
        const unsigned char lead = bytes[0];
        if (lead < 0x80)
            return 1;
        int size = 0;
        char32_t code = 0;
        char32_t least = 0;
        if ((lead & 0xE0) == 0xC0) {
            size = 2, code = lead & 0x1F, least = 0x80;
        } else if ((lead & 0xF0) == 0xE0) {
            size = 3, code = lead & 0x0F, least = 0x800;
        } else if ((lead & 0xF8) == 0xF0) {
            size = 4, code = lead & 0x07, least = 0x10000;
        } else {
            return 0;
        }
        if (size > available)
            return 0;
        for (int k = 1; k < size; ++k) {
            if ((bytes[k] & 0xC0) != 0x80)
                return 0;
            code = code << 6 | (bytes[k] & 0x3F);
        }
        // Overlong forms, surrogates and code points beyond Unicode are not UTF-8.
        if (code < least || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF)
            return 0;
        return size;
    }
};

} // namespace

void keepFileNamesAsGiven() {
    QTextCodec* current = QTextCodec::codecForLocale();
    if (!current || current->mibEnum() != 106) // a single-byte locale decodes every byte anyway
        return;
    // Qt owns every codec made and deletes them as the program ends.
    QTextCodec::setCodecForLocale(new ByteKeepingUtf8Codec);
}

QString printableFileName(const QString& name) {
    QString text;
    text.reserve(name.size());
    for (const QChar c : name) {
        const char16_t u = c.unicode();
        if (isEscapedByte(u))
            text += hexEscape(u - kEscapedByteBase);
        else if (u == '\\')
            text += QLatin1String("\\\\");
        else if (u == '\n')
            text += QLatin1String("\\n");
        else if (u == '\t')
            text += QLatin1String("\\t");
        else if (u == '\r')
            text += QLatin1String("\\r");
        else if (u < 0x20 || u == 0x7F)
            text += hexEscape(u);
        else
            text += c;
    }
    return text;
}

std::string printableFileNameUtf8(const QString& name) { return printableFileName(name).toStdString(); }
