// The program's own units never include each other in a loop: a loop makes two classes one in all but name.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <vector>

TEST(IncludeLoop, no_unit_of_the_program_reaches_itself_through_its_includes) {
    // Unit ("ui/PlaylistView", header and source together) -> the units whose headers it includes.
    const QDir root(QStringLiteral(REELVUE_SOURCE_DIR "/desktop/src"));
    static const QRegularExpression include(QStringLiteral("^\\s*#\\s*include\\s+\"([^\"]+)\\.h\""),
                                            QRegularExpression::MultilineOption);
    std::map<QString, std::set<QString>> includes;
    QDirIterator files(root.path(), {"*.h", "*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        const QString unit = root.relativeFilePath(file.fileName()).section(QLatin1Char('.'), 0, 0);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        for (auto match = include.globalMatch(QString::fromUtf8(file.readAll())); match.hasNext();) {
            const QString included = match.next().captured(1);
            if (included != unit && QFile::exists(root.filePath(included + ".h")))
                includes[unit].insert(included);
        }
    }
    ASSERT_GT(includes.size(), 20u);

    // Depth first; a unit met again while it is still on the path closes a loop.
    std::vector<QString> path;
    std::set<QString> done;
    std::function<void(const QString&)> visit = [&](const QString& unit) {
        const auto onPath = std::find(path.begin(), path.end(), unit);
        if (onPath != path.end()) {
            QStringList loop(onPath, path.end());
            ADD_FAILURE() << (loop << unit).join(" -> ").toStdString();
            return;
        }
        if (!done.insert(unit).second)
            return;
        path.push_back(unit);
        const auto edges = includes.find(unit);
        if (edges != includes.end())
            for (const QString& next : edges->second)
                visit(next);
        path.pop_back();
    };
    for (const auto& entry : includes)
        visit(entry.first);
}
