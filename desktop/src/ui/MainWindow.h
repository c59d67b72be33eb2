// The main window of the player.
#pragma once

#include <QMainWindow>
#include <QPointer>

class ProgressDialog;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget* parent = nullptr);

private slots:
    void onActionCheckUpdate();
    void onAppUpdaterStarted();
    void onAppUpdaterFinished(const QString& message);
    void onBackgroundOperationProgress(int percent);
    void onBackgroundOperationCanceled();

private:
    void createMenus();
    void showProgressDialog(const QString& title);
    void closeProgressDialog();

    QPointer<ProgressDialog> m_progressDialog; // of the running background operation, at most one
};
