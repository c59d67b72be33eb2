// Build helper: writes Qt WebChannel's qwebchannel.js (a resource inside the library) to the given file, so the
// map page is complete in the run tree and in an installed, read-only copy.
#include <QCoreApplication>
#include <QFile>
#include <QWebChannel>

#include <cstdio>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s <output qwebchannel.js>\n", argv[0]);
        return 2;
    }
    (void)QWebChannel::staticMetaObject.className(); // keeps the library, and so its resource, linked in
    const QString source = QStringLiteral(":/qtwebchannel/qwebchannel.js");
    const QString target = QString::fromLocal8Bit(argv[1]);
    QFile::remove(target);
    if (!QFile::copy(source, target)) {
        std::fprintf(stderr, "Can't copy %s to %s\n", qPrintable(source), qPrintable(target));
        return 1;
    }
    return 0;
}
