// Whether an installer package may be installed: is it signed by somebody the system trusts?
#include <Orv/Mac/CheckPackageSignature.h>

#include <QFile>
#include <QTemporaryDir>

#include <cstdio>

using Orv::Utitlity::CheckPackageSignature;

static QString verdict(const QString& path)
{
    switch (CheckPackageSignature(path).check_()) {
    case CheckPackageSignature::Trusted:
        return "install it";
    case CheckPackageSignature::NoPackage:
        return "there is no such file";
    case CheckPackageSignature::SignatureError:
        return "not an archive, or not signed";
    case CheckPackageSignature::NotTrusted:
        return "signed by somebody unknown";
    }
    return QString();
}

int main(int argc, char** argv)
{
    if (argc == 2) { // for a package of your own
        std::puts(qPrintable(verdict(QFile::decodeName(argv[1]))));
        return 0;
    }
    const QTemporaryDir folder;
    QFile package(folder.filePath("setup.pkg"));
    if (!package.open(QIODevice::WriteOnly) || package.write("anything but an archive") < 0 || !package.flush())
        return 1;
    const bool isGood = verdict(folder.filePath("other.pkg")) == "there is no such file" &&
        verdict(package.fileName()) == "not an archive, or not signed";
    return isGood ? 0 : 1;
}
