#include "ui/WindowIcons.h"

#include "ui_MainWindow.h"

#include "ui/Icons.h"

#include <utility>
#include <vector>

void applyWindowIcons(Ui::MainWindow& ui, QWidget* window) {
    const std::vector<std::pair<QAbstractButton*, const char*>> icons = {
        {ui.openDeviceButton, "open-device"},     {ui.openDirectoryButton, "open-directory"},
        {ui.openFileButton, "open-file"},         {ui.saveItemButton, "save-item"},
        {ui.toBeginButton, "to-begin"},           {ui.slowDownButton, "slow-down"},
        {ui.stopButton, "stop"},                  {ui.playButton, "play"},
        {ui.pauseButton, "pause"},                {ui.speedUpButton, "speed-up"},
        {ui.toEndButton, "to-end"},               {ui.cyclePlayStartButton, "cycle-play-start"},
        {ui.cyclePlayStopButton, "cycle-play-stop"}, {ui.saveButton, "save"},
        {ui.cutButton, "cut"},                    {ui.cutOnButton, "cut-on"},
        {ui.rotateButton, "rotate"},              {ui.confirmCutButton, "confirm-cut"},
        {ui.rejectCutButton, "reject-cut"},       {ui.volumeMutedButton, "volume-muted"},
        {ui.volumeMediumButton, "volume-medium"}, {ui.volumeHighButton, "volume-high"},
        {ui.fullscreenButton, "fullscreen"},      {ui.exitFullscreenButton, "exit-fullscreen"},
    };
    for (const auto& [button, name] : icons) {
        button->setIcon(reelvueIcon(QString::fromLatin1(name)));
        button->setIconSize(QSize(22, 22));
    }
    ui.confirmCutButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    ui.rejectCutButton->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    window->setWindowIcon(reelvueIcon(QStringLiteral("reelvue")));
}
