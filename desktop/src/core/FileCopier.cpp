// Copies whole recording files, unchanged, as a background job.
#include "core/FileCopier.h"

#include <QFile>

FileCopier::FileCopier(QObject* parent) : QObject(parent) {
    // The command vector crosses threads in a queued call, which needs it under this exact name.
    qRegisterMetaType<FileCopierCommandVector>("FileCopierCommandVector");
}

void FileCopier::cancel() { m_canceled = true; }

void FileCopier::copy(FileCopierCommandVector copyCommands) {
    emit progress(0);
    const std::size_t count = copyCommands.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (m_canceled) {
            // Only whole files were copied; take them all back.
            for (std::size_t copied = 0; copied < i; ++copied)
                QFile::remove(copyCommands[copied].second);
            emit canceled();
            return;
        }
        // QFile::copy refuses an existing destination and leaves nothing behind when it fails.
        if (!QFile::copy(copyCommands[i].first, copyCommands[i].second)) {
            emit done(false);
            return;
        }
        emit progress(static_cast<int>(100 * (i + 1) / count));
    }
    emit done(true);
}
