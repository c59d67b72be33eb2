// BagIt tag files and their check on a small bag made here: names RFC 8493 asks to encode, Payload-Oxum.
#include "core/evidence/Bag.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QByteArray write(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(content);
    return content;
}

QByteArray read(const QString& path) {
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

} // namespace

TEST(Bag, names_with_percent_and_line_breaks_are_encoded_in_the_manifest_and_the_bag_verifies) {
    QTemporaryDir bag;
    const QStringList names = {"data/100% sure.txt", "data/two\nlines.txt", "data/plain.txt"};
    std::vector<bagit::Entry> payload;
    for (const QString& name : names) {
        write(bag.filePath(name), name.toUtf8());
        payload.push_back({name, bagit::sha256OfFile(bag.filePath(name))});
    }
    QString error;
    ASSERT_TRUE(bagit::writeTagFiles(bag.path(), payload, {{"Source-Organization", "test"}}, &error)) << error.toStdString();

    const QByteArray manifest = read(bag.filePath("manifest-sha256.txt"));
    EXPECT_TRUE(manifest.contains("  data/100%25 sure.txt\n"));
    EXPECT_TRUE(manifest.contains("  data/two%0Alines.txt\n"));
    EXPECT_EQ(manifest.count('\n'), 3) << "one line per file";
    const QByteArray info = read(bag.filePath("bag-info.txt"));
    EXPECT_TRUE(info.contains("Source-Organization: test\n"));
    EXPECT_TRUE(info.contains("Payload-Oxum: 50.3\n")); // each file holds its own name: 18 + 18 + 14 bytes
    EXPECT_TRUE(bagit::verify(bag.path()).empty());

    // The encoded name still points at its file: changing it is found under its real name.
    write(bag.filePath("data/two\nlines.txt"), "changed");
    const std::vector<bagit::Problem> problems = bagit::verify(bag.path());
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].kind, bagit::Problem::Changed);
    EXPECT_EQ(problems[0].path, "data/two\nlines.txt");
}
