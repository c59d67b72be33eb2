#include "ui/PlaylistPane.h"

#include "core/PlaylistItemModel.h"
#include "core/PlaylistLoader.h"
#include "logging/Logging.h"
#include "ui/JobRunner.h"
#include "ui/PlaylistView.h"
#include "ui/QPlaylistTabWidget.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>

#include <algorithm>

namespace {
constexpr const char* kLogger = "ui.MainWindow"; // its lines are the window's
} // namespace

PlaylistPane::PlaylistPane(QPlaylistTabWidget* tabs, std::vector<PlaylistView*> views, JobRunner* jobs,
                           const FileChoosers& choosers, QWidget* window)
    : QObject(window), m_tabs(tabs), m_views(std::move(views)), m_jobs(jobs), m_choosers(choosers), m_window(window) {
    // A drop is loaded once the drop event has returned, as the storage path does.
    connect(m_tabs, &QPlaylistTabWidget::dropToPlaylist, this, [this](const QString& path) {
        const bool isDirectory = QFileInfo(path).isDir();
        QMetaObject::invokeMethod(this, [this, path, isDirectory] { isDirectory ? loadDirectory(path) : loadFile(path); },
                                  Qt::QueuedConnection);
    });
    m_liveViews.assign(m_views.begin(), m_views.end());
    for (size_t i = 0; i < m_views.size(); ++i) {
        PlaylistView* view = m_views[i];
        connect(view, &PlaylistView::itemChosen, this, [this, view](int index) { choose(view, index); });
        connect(view, &PlaylistView::repairRequested, this, [this, i](int item) {
            if (i < m_models.size() && item >= 0 && item < m_models[i]->itemCount() &&
                !m_models[i]->summary(item).damaged.empty())
                emit repairRequested(m_models[i]->summary(item).damaged.front()->mainVideo.absoluteFilePath());
        });
    }
}

PlaylistPane::~PlaylistPane() {
    for (const QPointer<PlaylistView>& view : m_liveViews) // a view that outlives the models lets go of them
        if (view)
            view->setModel(nullptr);
}

void PlaylistPane::openDirectory() {
    const QString path = m_choosers.existingDirectory(m_window, tr("Open directory"), m_loadingPath);
    if (!path.isEmpty())
        loadDirectory(path);
}

void PlaylistPane::openFile() {
    const QString path = QFileDialog::getOpenFileName(m_window, tr("Open file"), m_loadingPath,
                                                      tr("MP4, MOV(*.mp4 *.mov);;MP4(*.mp4);;MOV(*.mov)"));
    if (!path.isEmpty())
        loadFile(path);
}

void PlaylistPane::loadDirectory(const QString& path) {
    LOG_INFO(kLogger, "Open directory {}", path.toStdString());
    startLoading(path, false);
}

void PlaylistPane::loadFile(const QString& path) {
    LOG_INFO(kLogger, "Open file {}", path.toStdString());
    startLoading(path, true);
}

void PlaylistPane::startLoading(const QString& path, bool isFile) {
    if (m_jobs->isBusy()) {
        LOG_WARN(kLogger, "Can't open {} while another operation runs", path.toStdString());
        return;
    }
    auto* loader = new PlaylistLoader;
    m_loaded.reset();
    m_loadedModels.clear();
    m_loadFailure.clear();
    // Kept here first; the runner, connected after, then reports the end.
    connect(loader, &PlaylistLoader::loaded, this,
            [this](Playlist* playlist, PlaylistProcessedItemModel* trips, PlaylistProcessedItemModel* parking,
                   PlaylistRawItemModel* events, PlaylistRawItemModel* files) {
                m_loaded.reset(playlist);
                m_loadedModels.clear();
                for (PlaylistItemModel* model : std::initializer_list<PlaylistItemModel*>{trips, parking, events, files})
                    m_loadedModels.emplace_back(model);
            });
    connect(loader, &PlaylistLoader::failed, this, [this](const QString& message) { m_loadFailure = message; });
    m_loadingPath = path;
    const auto start = [loader, path, isFile] { isFile ? loader->loadFile(path) : loader->loadDirectory(path); };
    m_jobs->run(tr("Loading from directory status"), {JobRunner::step(loader, start)}, [this](const JobRunner::Endings& endings) {
        if (endings.front() == JobRunner::Ending::Canceled) {
            LOG_INFO(kLogger, "Loading {} canceled", m_loadingPath.toStdString());
            return;
        }
        if (endings.front() == JobRunner::Ending::Done && m_loaded && !m_loaded->rawItems().empty()) {
            show(std::move(m_loaded), std::move(m_loadedModels));
            return;
        }
        m_loaded.reset();
        m_loadedModels.clear();
        if (!m_loadFailure.isEmpty())
            LOG_WARN(kLogger, "Loading {} failed: {}", m_loadingPath.toStdString(), m_loadFailure.toStdString());
        // Videos were found but none has a time: saying that there are none would send the user looking
        // for the wrong fault.
        const QString text = m_loadFailure == QLatin1String(PlaylistDiscovery::kNoneDated)
                                 ? tr("None of the videos found could be dated: their names give no recording time "
                                      "and no GPS track gives one")
                                 : tr("In the path specified there are no video files and the nested subfolder "
                                      "structure is missing or incorrect");
        QMessageBox::warning(m_window, tr("Failed to load"), text);
    });
}

void PlaylistPane::show(std::unique_ptr<Playlist> playlist, std::vector<std::unique_ptr<PlaylistItemModel>> models) {
    clear();
    m_playlist = std::move(playlist);
    setModels(std::move(models));
    m_loadedPath = m_loadingPath;
    emit loadedPathChanged(m_loadedPath);

    // The first trip plays at once; a card without trips starts with its first recording.
    for (size_t i = 0; i < m_views.size(); ++i) {
        if (m_models[i]->itemCount() > 0) {
            m_tabs->setCurrentIndex(static_cast<int>(i));
            const QSignalBlocker quiet(m_views[i]); // the choice is made right here
            m_views[i]->selectItem(0);
            choose(m_views[i], 0);
            break;
        }
    }
}

void PlaylistPane::setModels(std::vector<std::unique_ptr<PlaylistItemModel>> models) {
    for (size_t i = 0; i < m_views.size(); ++i)
        m_views[i]->setModel(i < models.size() ? models[i].get() : nullptr);
    m_models = std::move(models); // after the views have let go of the old ones
}

void PlaylistPane::setAttachment(const std::optional<TrackAttachment>& attachment) {
    if (!m_playlist)
        return;
    if (!m_loadedPlaylist)
        m_loadedPlaylist = std::move(m_playlist);
    if (attachment) {
        m_playlist = std::make_unique<Playlist>(attachment->applyTo(*m_loadedPlaylist));
    } else {
        m_playlist = std::move(m_loadedPlaylist);
    }
    // The rows stay as they were: the attachment keeps every trip and parking period in place.
    std::vector<std::unique_ptr<PlaylistItemModel>> models;
    models.push_back(std::make_unique<PlaylistProcessedItemModel>(m_playlist->processedItemsOfKind(Playlist::Trip), Playlist::Trip));
    models.push_back(std::make_unique<PlaylistProcessedItemModel>(m_playlist->processedItemsOfKind(Playlist::ParkingPeriod),
                                                                  Playlist::ParkingPeriod));
    models.push_back(std::make_unique<PlaylistRawItemModel>(m_playlist->rawItemsOfCategory(Playlist::Event)));
    models.push_back(std::make_unique<PlaylistRawItemModel>(m_playlist->rawItems()));
    setModels(std::move(models));
    emit rawItemsChanged();
    if (m_playingView && m_playingItem >= 0) {
        const QSignalBlocker quiet(m_playingView); // the choice is made right here
        m_playingView->selectItem(m_playingItem);
        choose(m_playingView, m_playingItem);
    }
}

void PlaylistPane::clear() {
    emit closed();
    setModels({});
    m_playlist.reset();
    m_loadedPlaylist.reset();
    m_loadedPath.clear();
    m_playingView = nullptr;
    m_playingItem = -1;
    emit loadedPathChanged(QString());
}

void PlaylistPane::choose(PlaylistView* view, int index) {
    const auto tab = static_cast<size_t>(std::find(m_views.begin(), m_views.end(), view) - m_views.begin());
    if (tab >= m_models.size())
        return;
    m_playingView = view;
    m_playingItem = index;
    if (auto* processed = dynamic_cast<PlaylistProcessedItemModel*>(m_models[tab].get())) {
        if (index >= 0 && index < processed->itemCount()) {
            const Playlist::ProcessedItemPtr& item = processed->items()[index];
            emit itemChosen(item->items, item->from, item->to);
        }
    } else if (auto* raw = dynamic_cast<PlaylistRawItemModel*>(m_models[tab].get())) {
        if (index >= 0 && index < raw->itemCount()) {
            const Playlist::RawItemPtr& item = raw->items()[index];
            emit itemChosen({item}, item->from, item->to);
        }
    }
}

bool PlaylistPane::step(int step) {
    PlaylistView* view = m_playingView ? m_playingView
                                       : m_views.at(static_cast<size_t>(std::max(0, m_tabs->currentIndex())));
    const int index = m_playingItem + step;
    const QSignalBlocker quiet(view); // the choice is made right here
    if (!view->selectItem(index))
        return false;
    choose(view, index);
    return true;
}
