// "Repair…" of a recording whose index was lost: finds a healthy sibling, asks where the copy goes, and runs the
// repair as a window job.
//
// Lives on the GUI thread. Owns nothing but the flow; the repair job runs on the JobRunner's worker thread and
// is owned by the runner while it runs.
#pragma once

#include "ui/FileChoosers.h"

#include <QObject>
#include <QString>

class JobRunner;
class QWidget;

class RepairFlow : public QObject {
    Q_OBJECT
public:
    RepairFlow(JobRunner* jobs, const FileChoosers& choosers, QWidget* window);

public slots:
    void repair(const QString& damagedPath);

private:
    JobRunner* m_jobs;
    const FileChoosers& m_choosers;
    QWidget* m_window;
    QString m_lastFolder;
};
