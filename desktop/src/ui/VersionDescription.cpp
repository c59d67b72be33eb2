#include "ui/VersionDescription.h"

#include <sodium.h>

#include <algorithm>
#include <stdexcept>

namespace {
bool isLowerHex(const QByteArray& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

bool signedByOneOf(const QByteArray& message, const QByteArray& signature, const QList<QByteArray>& publicKeys) {
    for (const QByteArray& key : publicKeys)
        if (key.size() == crypto_sign_PUBLICKEYBYTES &&
            crypto_sign_verify_detached(reinterpret_cast<const unsigned char*>(signature.constData()),
                                        reinterpret_cast<const unsigned char*>(message.constData()),
                                        static_cast<unsigned long long>(message.size()),
                                        reinterpret_cast<const unsigned char*>(key.constData())) == 0)
            return true;
    return false;
}
} // namespace

VersionDescription VersionDescription::verify(const QByteArray& text, const QList<QByteArray>& publicKeys) {
    if (sodium_init() < 0)
        throw std::runtime_error("libsodium cannot be initialised");
    if (publicKeys.isEmpty())
        throw std::runtime_error("this build has no update key");

    QByteArray body = text;
    while (body.endsWith('\n') || body.endsWith('\r'))
        body.chop(1);
    const int lastLine = body.lastIndexOf('\n') + 1;
    const auto signature = QByteArray::fromBase64Encoding(body.mid(lastLine).trimmed(),
                                                          QByteArray::AbortOnBase64DecodingErrors);
    if (lastLine == 0 || !signature || signature.decoded.size() != crypto_sign_BYTES)
        throw std::runtime_error("the version description is not signed");
    const QByteArray message = text.left(lastLine);
    if (!signedByOneOf(message, signature.decoded, publicKeys))
        throw std::runtime_error("the signature of the version description matches no update key of this build");

    const QList<QByteArray> lines = message.split('\n');
    VersionDescription description;
    description.version = lines.value(0).trimmed();
    description.installerUrl = QUrl(QString::fromUtf8(lines.value(1).trimmed()), QUrl::StrictMode);
    description.installerSha256 = lines.value(2).trimmed().toLower();
    if (description.installerSha256.size() != 2 * crypto_hash_sha256_BYTES || !isLowerHex(description.installerSha256))
        throw std::runtime_error("the version description has no SHA-256 of the installer");
    return description;
}
