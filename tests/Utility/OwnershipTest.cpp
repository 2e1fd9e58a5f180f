#include <Orv/Utility/Ownership.h>

#include "DirectoryTest.h"
#include "Log/ChildProcess.h"

#include <QDir>
#include <QFileInfo>

#include <cstring>

using Orv::Utility::changeOwnershipForPath;
using Orv::Utility::LinkPolicy;

namespace {

constexpr uint Owner = 12345; // of the enclosing directory
constexpr uint Group = 23456;

QPair<uint, uint> ownersOf(const QString& path)
{
    return {QFileInfo(path).ownerId(), QFileInfo(path).groupId()};
}

QString changeLine(const QString& path, const char* what = "path")
{
    return QString("debug: Change owner for %4: %1 owner: %2 group: %3").arg(path).arg(Owner).arg(Group).arg(what);
}

/// A directory of another user with nested entries of this user: two directories and a file with a non-ASCII name.
class OwnershipTest : public DirectoryTest {
protected:
    void SetUp() override
    {
        if (::geteuid() != 0)
            GTEST_SKIP() << "only root can change owners";
        ASSERT_TRUE(QDir().mkpath(lower));
        ASSERT_TRUE(QFile(file).open(QIODevice::WriteOnly));
        ASSERT_EQ(::chown(QFile::encodeName(top), Owner, Group), 0);
    }

    const QString top = pathOf("top");
    const QString upper = top + QStringLiteral("/upper");
    const QString lower = upper + QStringLiteral("/lower");
    const QString file = lower + QStringLiteral("/größe");
    const QString firstLine = QStringLiteral("debug: Ownere for path: %1 owner: %2 group: %3")
                                  .arg(file, QFileInfo("/").owner(), QFileInfo("/").group());
};

} // namespace

TEST_F(OwnershipTest, ChangesFromTheTopDown)
{
    EXPECT_TRUE(changeOwnershipForPath(file));
    for (const QString& path : {upper, lower, file})
        EXPECT_EQ(ownersOf(path), qMakePair(Owner, Group)) << qPrintable(path);
    EXPECT_EQ(logged.take(),
        QStringList(
            {firstLine, changeLine(file, "full path"), changeLine(upper), changeLine(lower), changeLine(file)}));
    EXPECT_TRUE(changeOwnershipForPath(upper)) << "only its ancestors matter";
}

TEST_F(OwnershipTest, NearestOtherOwner)
{
    ASSERT_EQ(::chown(QFile::encodeName(lower), Owner + 1, Group + 1), 0);
    EXPECT_TRUE(changeOwnershipForPath(QDir::current().relativeFilePath(file)));
    EXPECT_EQ(ownersOf(file), qMakePair(Owner + 1, Group + 1));
    EXPECT_EQ(ownersOf(lower), qMakePair(Owner + 1, Group + 1));
    EXPECT_EQ(ownersOf(upper), qMakePair(0u, 0u));
}

TEST_F(OwnershipTest, OneOwnerUpToTheRoot)
{
    for (QFileInfo directory(m_directory.path()); !directory.isRoot(); directory.setFile(directory.path()))
        ASSERT_EQ(directory.ownerId(), 0u) << "this test needs a temporary directory owned by root";
    ASSERT_EQ(::chown(QFile::encodeName(top), 0, Group), 0);
    EXPECT_TRUE(changeOwnershipForPath(file));
    EXPECT_EQ(ownersOf(file), qMakePair(0u, 0u));
    EXPECT_EQ(ownersOf(top), qMakePair(0u, Group));
    EXPECT_EQ(logged.take(), QStringList(firstLine));
}

TEST_F(OwnershipTest, LinksAreRefused)
{
    const QString victim = pathOf("victim"), victimFile = victim + "/file";
    ASSERT_TRUE(QDir().mkpath(victim) && QFile(victimFile).open(QIODevice::WriteOnly));
    ASSERT_TRUE(QFile::link(victim, top + "/directory-link") && QFile::link(victimFile, top + "/file-link"));
    ASSERT_EQ(::link(QFile::encodeName(victimFile), QFile::encodeName(top + "/hard-link")), 0);
    const QString places[] = {top + "/directory-link/file", top + "/directory-link", top + "/file-link",
        top + "/hard-link", top + "/directory-link/../upper", lower + "/../lower", lower + "/missing", file + "/below",
        QString()};
    for (const QString& place : places) {
        EXPECT_FALSE(changeOwnershipForPath(place, LinkPolicy::Refuse)) << qPrintable(place);
        EXPECT_EQ(logged.take().filter("warning: Error on change owner for path: ").size(), 1) << qPrintable(place);
        for (const QString& path : {victim, victimFile, upper, lower, file})
            EXPECT_EQ(ownersOf(path), qMakePair(0u, 0u)) << qPrintable(place + " changed " + path);
    }
    ASSERT_TRUE(changeOwnershipForPath(top + "/directory-link/file", LinkPolicy::Follow)) << "follows links";
    EXPECT_EQ(ownersOf(victim), qMakePair(Owner, Group));

    logged.take();
    EXPECT_TRUE(changeOwnershipForPath(file, LinkPolicy::Refuse));
    for (const QString& path : {upper, lower, file})
        EXPECT_EQ(ownersOf(path), qMakePair(Owner, Group)) << qPrintable(path);
    EXPECT_EQ(logged.take(),
        QStringList(
            {firstLine, changeLine(file, "full path"), changeLine(upper), changeLine(lower), changeLine(file)}));
}

TEST_F(OwnershipTest, PathWithNul)
{
    EXPECT_FALSE(changeOwnershipForPath(file + QChar(0)));
    EXPECT_FALSE(changeOwnershipForPath(file + QChar(0), LinkPolicy::Refuse));
    EXPECT_EQ(ownersOf(file), qMakePair(0u, 0u)) << "the path before the NUL";
}

using Ownership = DirectoryTest; // does not require root

TEST_F(Ownership, StopsAtTheFirstFailure)
{
    const QString file = pathOf("file");
    ASSERT_TRUE(QFile(file).open(QIODevice::WriteOnly));
    expectInChild([&] {
        if (::geteuid() == 0) { // root drops its privileges temporarily
            EXPECT_EQ(::chown(QFile::encodeName(m_directory.path()), Owner, Group), 0);
            EXPECT_EQ(::chown(QFile::encodeName(file), Owner, Group), 0);
            EXPECT_EQ(::seteuid(Owner), 0);
        }
        EXPECT_FALSE(changeOwnershipForPath(file));
        const QStringList lines = logged.take();
        EXPECT_EQ(lines.filter("debug: Change owner for path: ").size(), 1) << "nothing below it";
        EXPECT_EQ(lines.filter(file).size(), 2) << "the first two lines";
        EXPECT_TRUE(lines.last().startsWith("warning: Error on change owner for path: "));
        EXPECT_TRUE(lines.last().endsWith(QString(" message: ") + std::strerror(EPERM)));
        EXPECT_EQ(QFileInfo(file).ownerId(), ::geteuid());
        EXPECT_EQ(::seteuid(::getuid()), 0); // sanitizers need the privileges at exit
    });
}
