// The icons of the main window's tool buttons and of the window itself.
#pragma once

namespace Ui {
class MainWindow;
}
class QWidget;

void applyWindowIcons(Ui::MainWindow& ui, QWidget* window);
