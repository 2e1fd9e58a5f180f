#include <Orv/Utility/TemporaryFile.h>

#include "Log/LoggedLines.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using Orv::Utility::TemporaryFile;

namespace {

QStringList namesIn(const QTemporaryDir& folder)
{
    return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden);
}

} // namespace

TEST(TemporaryFile, GoesWhenItIsClosed)
{
    const QTemporaryDir folder;
    LoggedLines logged;
    for (const bool nameIsAsked : {false, true}) {
        TemporaryFile file(folder.filePath(QStringLiteral("part-XXXXXX")), nullptr);
        ASSERT_TRUE(file.open());
        ASSERT_EQ(file.write("12345"), 5);
        ASSERT_TRUE(file.flush());
        if (nameIsAsked) {
            EXPECT_TRUE(QFile::exists(file.fileName()));
            EXPECT_EQ(namesIn(folder).size(), 1);
        }
        file.close();
        EXPECT_EQ(namesIn(folder), QStringList()) << nameIsAsked;
        EXPECT_FALSE(file.isOpen());
        file.close();
    }
    {
        TemporaryFile file(folder.filePath(QStringLiteral("part-XXXXXX")), nullptr);
        ASSERT_TRUE(file.open());
        EXPECT_FALSE(file.fileName().isEmpty());
    }
    EXPECT_EQ(namesIn(folder), QStringList()) << "it goes with its object, too";
    EXPECT_EQ(logged.take(), QStringList());
}

TEST(TemporaryFile, RemovesOnlyOnce)
{
    const QTemporaryDir folder;
    TemporaryFile file(folder.filePath(QStringLiteral("part-XXXXXX")), nullptr);
    ASSERT_TRUE(file.open());
    const QString name = file.fileName();
    file.close();
    QFile other(name); // somebody else's, by now
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_TRUE(other.exists());
}

TEST(TemporaryFile, StaysIfItIsTold)
{
    const QTemporaryDir folder;
    QObject parent;
    auto* const file = new TemporaryFile(folder.filePath(QStringLiteral("part-XXXXXX")), &parent);
    EXPECT_EQ(file->parent(), &parent);
    EXPECT_STREQ(file->metaObject()->className(), "Orv::Utility::TemporaryFile");
    file->setAutoRemove(false);
    ASSERT_TRUE(file->open());
    const QString name = file->fileName();
    file->close();
    EXPECT_TRUE(QFile::exists(name));
    file->setAutoRemove(true);
    file->close();
    EXPECT_FALSE(QFile::exists(name)) << "nothing has removed it so far";
}
