// The version description the update server publishes, read only when a key built into the program signed it.
#pragma once

#include <QByteArray>
#include <QList>
#include <QUrl>

// The text is four lines:
//
//     2.0.0
//     https://update.lumicor.com/files/Reelvue-2.0.0.sh
//     <SHA-256 of the installer, 64 lower-case hex digits>
//     <Ed25519 signature in base64 over the exact bytes of everything before this line>
//
// The signature travels as the last line of the same answer rather than as a second ".sig" request: one answer
// cannot mix a description of one release with the signature of another (mirrors and caches update files one
// by one), there is no second request to time out or fail, and players that read only the first two lines are
// unaffected. Lines added later go before the signature, which covers them too.
struct VersionDescription {
    QByteArray version;         // line 1 as written; the updater parses it itself
    QUrl installerUrl;          // line 2
    QByteArray installerSha256; // line 3, lower-case hex

    // Checks the signature against each of the Ed25519 public keys (32 bytes each) and reads the lines.
    // Throws std::runtime_error saying why when the text is unsigned, signed by no given key or incomplete.
    static VersionDescription verify(const QByteArray& text, const QList<QByteArray>& publicKeys);
};
