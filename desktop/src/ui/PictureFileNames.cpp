// Names proposed for saved pictures: video frames and window shots.
#include "ui/PictureFileNames.h"

#include <QDir>
#include <QFileInfo>

namespace {
const QString kTimeFormat = QStringLiteral("yyyyMMddTHHmmsszzz");
const QString kPrefix = QStringLiteral("lumicor-reelvue-");
const QString kSuffix = QStringLiteral("jpg");
} // namespace

QString frameBaseName(bool mainCamera, bool rearCamera, const QDateTime& position) {
    QString camera = QStringLiteral("video");
    if (mainCamera && !rearCamera)
        camera = QStringLiteral("video-front");
    else if (rearCamera && !mainCamera)
        camera = QStringLiteral("video-rear");
    return camera + QLatin1Char('-') + position.toString(kTimeFormat);
}

QString windowBaseName(const QDateTime& now) { return QStringLiteral("window-") + now.toString(kTimeFormat); }

QString proposeImagePath(const QString& dir, const QString& baseName) {
    const QString stem = QDir(dir).absolutePath() + QDir::separator() + kPrefix + baseName;
    QString path = stem + QLatin1Char('.') + kSuffix;
    for (int n = 1; QFileInfo::exists(path); ++n)
        path = stem + QLatin1Char('(') + QString::number(n) + QStringLiteral(").") + kSuffix;
    return QDir::toNativeSeparators(path);
}
