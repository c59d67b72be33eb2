// reelvue-cli storages: the list of mounted cards, and --watch printing arrivals and removals until Ctrl+C.
#include "support/TestSupport.h"
#include "support/TmpfsMount.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/mount.h>

using testing::HasSubstr;
using testsupport::TmpfsMount;
using testsupport::waitUntil;

namespace {

std::string line(const QString& prefix, const TmpfsMount& card, const QString& root) {
    return (prefix + root + "\t" + root + "\t" + QString::fromLatin1(card.device()) + "\ttmpfs\n").toStdString();
}

} // namespace

TEST(CommandStorages, rejects_unknown_arguments) {
    QProcess process;
    process.start(QStringLiteral(REELVUE_RUN_DIR "/reelvue-cli"), {"storages", "--frob"});
    ASSERT_TRUE(process.waitForFinished(30000));
    EXPECT_EQ(process.exitCode(), 2);
    EXPECT_THAT(process.readAllStandardError().toStdString(), HasSubstr("Unknown argument: --frob"));
}

TEST(CommandStorages, lists_the_mounted_cards_then_watches_them_come_and_go_until_interrupted) {
    testsupport::MountTestLock mountLock;
    const QString why = TmpfsMount::whyNotPossible();
    if (!why.isEmpty())
        GTEST_SKIP() << why.toStdString();
    TmpfsMount card("reelvue-cli-card");
    card.makeRecorderLayout();
    TmpfsMount plain("reelvue-cli-plain");

    QProcess list;
    list.start(QStringLiteral(REELVUE_RUN_DIR "/reelvue-cli"), {"storages"});
    ASSERT_TRUE(list.waitForFinished(30000));
    EXPECT_EQ(list.exitCode(), 0);
    const std::string listed = list.readAllStandardOutput().toStdString();
    EXPECT_THAT(listed, HasSubstr(line("", card, card.path())));
    EXPECT_THAT(listed, testing::Not(HasSubstr(plain.path().toStdString())));

    QProcess watch;
    std::string out;
    const auto readOut = [&] { out += watch.readAllStandardOutput().toStdString(); };
    watch.start(QStringLiteral(REELVUE_RUN_DIR "/reelvue-cli"), {"storages", "--watch"});
    ASSERT_TRUE(watch.waitForStarted());
    ASSERT_TRUE(waitUntil([&] { readOut(); return out.find(card.path().toStdString()) != std::string::npos; }, 10000));

    // The same card shown at a second place, with its folders already there, as a desktop mounts a card.
    QTemporaryDir second;
    ASSERT_EQ(::mount(QFile::encodeName(card.path()).constData(), QFile::encodeName(second.path()).constData(),
                      nullptr, MS_BIND, nullptr), 0);
    EXPECT_TRUE(waitUntil([&] { readOut(); return out.find(line("arrived\t", card, second.path())) != std::string::npos; }, 2000)) << out;
    ::umount2(QFile::encodeName(second.path()).constData(), MNT_DETACH);
    EXPECT_TRUE(waitUntil([&] { readOut(); return out.find(line("removed\t", card, second.path())) != std::string::npos; }, 2000)) << out;

    ::kill(static_cast<pid_t>(watch.processId()), SIGINT);
    ASSERT_TRUE(watch.waitForFinished(10000));
    EXPECT_EQ(watch.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(watch.exitCode(), 0);
}
