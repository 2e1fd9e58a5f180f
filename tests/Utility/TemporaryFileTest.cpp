#include <Orv/Utility/TemporaryFile.h>

#include "DirectoryTest.h"

#include <QDir>

using Orv::Utility::TemporaryFile;

namespace {

class TemporaryFileTest : public DirectoryTest {
protected:
    void SetUp() override { ASSERT_TRUE(m_file->open() && m_file->write("12345") == 5 && m_file->flush()); }
    int fileCount() const { return QDir(m_directory.path()).entryList(QDir::Files | QDir::Hidden).size(); }

    QObject m_parent;
    TemporaryFile* m_file = new TemporaryFile(pathOf("part-XXXXXX"), &m_parent);
};

} // namespace

TEST_F(TemporaryFileTest, RemovedOnClose)
{
    m_file->close();
    EXPECT_EQ(fileCount(), 0) << "even if fileName() was never called";
    EXPECT_FALSE(m_file->isOpen());
    m_file->close();
    EXPECT_EQ(logged.take(), QStringList());
}

TEST_F(TemporaryFileTest, RemovedOnDestruction)
{
    EXPECT_TRUE(QFile::exists(m_file->fileName()));
    ASSERT_EQ(m_file->parent(), &m_parent);
    delete m_file;
    EXPECT_EQ(fileCount(), 0);
}

TEST_F(TemporaryFileTest, RemovesOnlyOnce)
{
    QFile other(m_file->fileName()); // the name will be reused
    m_file->close();
    EXPECT_EQ(fileCount(), 0);
    ASSERT_TRUE(other.open(QIODevice::WriteOnly));
    m_file->close();
    EXPECT_TRUE(other.exists());
}

TEST_F(TemporaryFileTest, KeptWithoutAutoRemove)
{
    m_file->setAutoRemove(false);
    const QString name = m_file->fileName();
    m_file->close();
    EXPECT_TRUE(QFile::exists(name));
    m_file->setAutoRemove(true);
    m_file->close();
    EXPECT_FALSE(QFile::exists(name)) << "not removed before";
}
