#include "ui/FullscreenController.h"

#include "ui/FullscreenVideoWidget.h"
#include "ui/VideoOutputEventFilter.h"

#include <QAbstractButton>
#include <QScreen>
#include <QVBoxLayout>

namespace {
constexpr int kHideControlsMs = 3000; // long enough to reach a button, short enough not to cover the picture
const QString kControlsStyle = QStringLiteral("background: #202020; color: white;");
} // namespace

FullscreenController::FullscreenController(const Widgets& widgets, QWidget* window, std::function<void(QWidget*)> prepare)
    : QObject(window), m_widgets(widgets), m_window(window), m_prepare(std::move(prepare)) {
    auto* filter = new VideoOutputEventFilter(this);
    m_widgets.videoArea->installEventFilter(filter);
    for (QWidget* output : m_widgets.outputs)
        output->installEventFilter(filter);
    connect(filter, &VideoOutputEventFilter::dblClickEvent, this, &FullscreenController::toggle);
    connect(m_widgets.enterButton, &QAbstractButton::clicked, this, &FullscreenController::toggle);
    connect(m_widgets.leaveButton, &QAbstractButton::clicked, this, &FullscreenController::toggle);
    m_widgets.leaveButton->hide();
    m_hideTimer.setSingleShot(true);
    m_hideTimer.setInterval(kHideControlsMs);
    connect(&m_hideTimer, &QTimer::timeout, this, &FullscreenController::hideControls);
}

FullscreenController::~FullscreenController() { delete m_fullscreen; }

bool FullscreenController::isFullscreen() const { return m_fullscreen && m_fullscreen->isVisible(); }

void FullscreenController::toggle() { isFullscreen() ? leave() : enter(); }

void FullscreenController::enter() {
    if (!m_fullscreen) {
        m_fullscreen = new FullscreenVideoWidget;
        if (m_prepare)
            m_prepare(m_fullscreen);
        connect(m_fullscreen, &FullscreenVideoWidget::resized, this, &FullscreenController::resized);
        connect(m_fullscreen, &FullscreenVideoWidget::mouseMoved, this, [this] {
            m_widgets.progressStrip->show();
            m_widgets.toolbar->show();
            m_fullscreen->unsetCursor();
            m_hideTimer.start();
        });
    }
    for (QWidget* widget : {m_widgets.videoArea, m_widgets.progressStrip, m_widgets.toolbar})
        m_fullscreen->layout()->addWidget(widget);
    m_widgets.progressStrip->setStyleSheet(kControlsStyle);
    m_widgets.toolbar->setStyleSheet(kControlsStyle);
    if (QScreen* screen = m_window->screen())
        m_fullscreen->setGeometry(screen->geometry());
    m_fullscreen->showFullScreen();
    m_fullscreen->activateWindow();
    m_widgets.enterButton->hide();
    m_widgets.leaveButton->show();
    m_hideTimer.start();
}

void FullscreenController::leave() {
    if (!isFullscreen())
        return;
    m_hideTimer.stop();
    auto* layout = static_cast<QVBoxLayout*>(m_widgets.pane->layout());
    layout->insertWidget(0, m_widgets.videoArea, 1);
    layout->insertWidget(1, m_widgets.progressStrip);
    layout->insertWidget(2, m_widgets.toolbar);
    for (QWidget* widget : {m_widgets.progressStrip, m_widgets.toolbar}) {
        widget->setStyleSheet(QString());
        widget->show();
    }
    m_fullscreen->hide();
    m_fullscreen->unsetCursor();
    m_widgets.leaveButton->hide();
    m_widgets.enterButton->show();
    m_window->activateWindow();
    emit resized();
}

// While full screen, the controls and the pointer step aside when the mouse rests.
void FullscreenController::hideControls() {
    if (!isFullscreen())
        return;
    m_widgets.progressStrip->hide();
    m_widgets.toolbar->hide();
    m_fullscreen->setCursor(Qt::BlankCursor);
}
