// The program's own units never include each other in a loop: a loop makes two classes one in all but name.
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

// Unit ("ui/PlaylistView") -> the units whose headers its header or source includes.
std::map<QString, std::set<QString>> includeGraph(const QString& sourceRoot) {
    static const QRegularExpression include(QStringLiteral("^\\s*#\\s*include\\s+\"([^\"]+)\\.h\""),
                                            QRegularExpression::MultilineOption);
    const QDir root(sourceRoot);
    std::map<QString, std::set<QString>> graph;
    QDirIterator files(sourceRoot, {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        QString unit = root.relativeFilePath(path);
        unit.chop(unit.size() - unit.lastIndexOf(QLatin1Char('.')));
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        auto matches = include.globalMatch(QString::fromUtf8(file.readAll()));
        while (matches.hasNext()) {
            const QString included = matches.next().captured(1);
            if (included != unit && QFile::exists(root.filePath(included + ".h")))
                graph[unit].insert(included);
        }
    }
    return graph;
}

// A path of units that leads from `unit` back to itself, or an empty one.
std::vector<QString> loopThrough(const std::map<QString, std::set<QString>>& graph, const QString& unit) {
    std::vector<QString> path{unit};
    std::set<QString> seen;
    std::function<bool(const QString&)> reachesStart = [&](const QString& from) {
        const auto edges = graph.find(from);
        if (edges == graph.end())
            return false;
        for (const QString& next : edges->second) {
            if (next == unit)
                return true;
            if (!seen.insert(next).second)
                continue;
            path.push_back(next);
            if (reachesStart(next))
                return true;
            path.pop_back();
        }
        return false;
    };
    return reachesStart(unit) ? path : std::vector<QString>{};
}

} // namespace

TEST(IncludeLoop, no_unit_of_the_program_reaches_itself_through_its_includes) {
    const auto graph = includeGraph(QStringLiteral(REELVUE_SOURCE_DIR "/desktop/src"));
    ASSERT_GT(graph.size(), 20u);
    for (const auto& entry : graph) {
        const std::vector<QString> loop = loopThrough(graph, entry.first);
        std::string text;
        for (const QString& unit : loop)
            text += unit.toStdString() + " -> ";
        EXPECT_TRUE(loop.empty()) << text << entry.first.toStdString();
    }
}
