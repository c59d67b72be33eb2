// Offline map files: adding, remembering, listing with their credit, and handing them to the tile handler.
#include "ui/OfflineMaps.h"

#include "core/MbtilesSource.h"
#include "core/SettingsKeys.h"
#include "core/TileCache.h"
#include "logging/Logging.h"
#include "ui/MapTileState.h"
#include "ui/TileSchemeHandler.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QSettings>
#include <QThreadPool>

#include <algorithm>
#include <utility>

namespace {
constexpr const char* kLogger = "ui.OfflineMaps";
} // namespace

TileSchemeHandler::Config OfflineMaps::configFromSettings() {
    const QSettings settings;
    const qint64 megabytes =
        settings.value(settingskeys::kMapTileCacheMegabytes, TileCache::kDefaultMaxBytes / (1024 * 1024)).toLongLong();
    return {settings.value(settingskeys::kMapTileServer, TileSchemeHandler::defaultServerUrl()).toString(),
            TileCache::defaultDirectory(), std::max<qint64>(1, megabytes) * 1024 * 1024};
}

OfflineMaps::OfflineMaps(QMenu* menu, QAction* before, MapTileState* tileState, const TileSchemeHandler::Config& tiles,
                         const FileChoosers& choosers, QWidget* window)
    : QObject(window), m_tileState(tileState), m_choosers(choosers), m_window(window),
      m_handler(new TileSchemeHandler(tiles, this)), m_addAction(new QAction(this)), m_listMenu(new QMenu(menu)) {
    menu->insertAction(before, m_addAction);
    menu->insertMenu(before, m_listMenu);
    menu->insertSeparator(before);
    connect(m_addAction, &QAction::triggered, this, &OfflineMaps::onAddMap);
    retranslate();
    showFiles();
    open(QSettings().value(settingskeys::kOfflineMapFiles).toStringList(), false);
}

OfflineMaps::~OfflineMaps() = default;

void OfflineMaps::install(QWebEngineProfile* profile) {
    m_handler->install(profile);
}

void OfflineMaps::retranslate() {
    m_addAction->setText(tr("Add offline map..."));
    m_listMenu->setTitle(tr("Offline maps"));
    showFiles();
}

void OfflineMaps::onAddMap() {
    const QString start = m_files.empty() ? QDir::homePath() : QFileInfo(m_files.back()->path()).path();
    const QString path =
        m_choosers.openFileName(m_window, tr("Add offline map"), start, tr("MBTiles maps (*.mbtiles)"));
    if (path.isEmpty())
        return;
    m_asked = true;
    open({path}, true);
}

void OfflineMaps::onForgetMaps() {
    QSettings().remove(settingskeys::kOfflineMapFiles);
    m_files.clear();
    m_handler->setMapFiles(m_files);
    showFiles();
}

void OfflineMaps::open(const QStringList& paths, bool remember) {
    if (paths.isEmpty())
        return;
    // Opening reads the disk, which may be a slow card or a share: off the user-interface thread.
    QPointer<OfflineMaps> self(this);
    QThreadPool::globalInstance()->start([self, paths, remember] {
        std::vector<std::shared_ptr<const MbtilesSource>> opened;
        QStringList errors;
        for (const QString& path : paths) {
            try {
                opened.push_back(MbtilesSource::open(path));
            } catch (const std::exception& e) {
                LOG_ERROR(kLogger, "Map file {} cannot be used: {}", path.toStdString(), e.what());
                errors << tr("%1 cannot be used as an offline map: %2")
                              .arg(QDir::toNativeSeparators(path), QString::fromStdString(e.what()));
            }
        }
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, opened = std::move(opened), errors, remember] {
                if (self)
                    self->onOpened(opened, errors, remember);
            },
            Qt::QueuedConnection);
    });
}

void OfflineMaps::onOpened(const std::vector<std::shared_ptr<const MbtilesSource>>& opened, const QStringList& errors,
                           bool remember) {
    const bool asked = std::exchange(m_asked, false);
    if (!errors.isEmpty()) {
        if (asked)
            QMessageBox::warning(m_window, tr("Offline map"), errors.join(QLatin1Char('\n')));
        else
            emit message(errors.join(QLatin1Char('\n')));
    }
    QStringList remembered = QSettings().value(settingskeys::kOfflineMapFiles).toStringList();
    for (const auto& source : opened) {
        const bool inUse = std::any_of(m_files.begin(), m_files.end(),
                                       [&](const auto& file) { return file->path() == source->path(); });
        if (!inUse)
            m_files.push_back(source);
        if (remember && !remembered.contains(source->path()))
            remembered << source->path();
    }
    if (remember)
        QSettings().setValue(settingskeys::kOfflineMapFiles, remembered);
    if (opened.empty())
        return;
    m_handler->setMapFiles(m_files);
    showFiles();
    emit filesChanged();
}

void OfflineMaps::showFiles() {
    m_listMenu->clear();
    QStringList credits;
    for (const auto& file : m_files) {
        const QString credit = file->attribution().isEmpty() ? file->name() : file->attribution();
        credits << credit;
        QAction* entry =
            m_listMenu->addAction(QStringLiteral("%1 \u2014 %2").arg(QFileInfo(file->path()).fileName(), credit));
        entry->setToolTip(QDir::toNativeSeparators(file->path()));
        entry->setEnabled(false);
    }
    if (!m_files.empty()) {
        m_listMenu->addSeparator();
        m_listMenu->addAction(tr("Forget offline maps"), this, &OfflineMaps::onForgetMaps);
    }
    m_listMenu->menuAction()->setEnabled(!m_files.empty());
    credits.removeDuplicates();
    credits << TileSchemeHandler::serverAttribution();
    const QString attribution = credits.join(QStringLiteral(" | "));
    if (attribution != m_tileState->attribution())
        m_tileState->setSources(attribution);
}
