// Where an export may write and how its file gets there: never over one of its inputs, never into the card
// it reads, never over an existing file unless the user agreed, and only whole (written beside the target
// under a temporary name, renamed into place when complete).
#pragma once

#include "core/Playlist.h"

#include <QString>
#include <QStringList>

#include <stdexcept>

namespace exporttarget {

// What the user allowed an export.
struct Permissions {
    // The card or folder the recordings were loaded from: nothing is written inside it. Empty: none.
    QString protectedFolder;
    // An existing file at the target may be replaced (the user confirmed it, or asked with --force).
    bool overwrite = false;
};

struct Refusal {
    enum Kind { None, IsInput, InsideCard, Exists, NotAFile };
    Kind kind = None;
    QString text; // English, for the log and the command line, naming the paths

    explicit operator bool() const { return kind != None; }
};

// Why an export reading `inputs` must not write `target`. Paths are compared canonically and by device and
// inode, so a link or another spelling of an input is that input, and a bind mount of the card is the card.
Refusal refusal(const QString& target, const QStringList& inputs, const Permissions& permissions);
// Why copies must not go into `folder` (which may not exist yet): it lies inside the protected folder.
Refusal folderRefusal(const QString& folder, const Permissions& permissions);

// Every file an export of the items reads: main and rear video, track.
QStringList inputFiles(const Playlist::RawItems& items);

// A failure of the place written to (disk full, folder missing or read-only, target taken): another
// container or option would not help. Its text ends with the system's reason.
class TargetError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The system's text for errno `error` ("No space left on device").
std::string systemErrorText(int error);

} // namespace exporttarget

// A new file beside the target under a hidden temporary name. commit() renames it into place; otherwise it
// is removed when this goes, so a failed or cancelled export takes away only its own file and whatever was
// at the target stays as it was.
//
//   PartialFile file("/home/me/cut.mp4");
//   file.create();                 // ".cut.mp4.Xy12Ab.part", created exclusively: it is ours
//   ... write file.path() ...
//   file.commit(/*overwrite=*/false);
class PartialFile {
public:
    explicit PartialFile(QString target);
    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    // Creates the file and keeps it open for writing(); throws TargetError with the system's reason.
    void create();
    bool created() const { return !m_path.isEmpty(); }
    const QString& path() const { return m_path; }
    const QString& target() const { return m_target; }
    // The open descriptor from create(), -1 after closeDescriptor().
    int descriptor() const { return m_descriptor; }
    // Closes the descriptor (a writer that opens the path itself calls it first); throws TargetError when
    // the system reports that written data was lost.
    void closeDescriptor();
    // Renames the whole file into place. Without `overwrite` an existing target is kept and this throws
    // TargetError, also when the target appeared while the file was being written.
    void commit(bool overwrite);
    // Removes the temporary file now.
    void discard();

private:
    QString m_target;
    QString m_path;
    int m_descriptor = -1;
    bool m_committed = false;
};
