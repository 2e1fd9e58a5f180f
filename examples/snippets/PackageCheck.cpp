// Checks whether an installer package is signed by a trusted party.
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
        return "no such file";
    case CheckPackageSignature::SignatureError:
        return "not an archive, or not signed";
    case CheckPackageSignature::NotTrusted:
        return "signed by an unknown party";
    }
    return QString();
}

int main(int argc, char** argv)
{
    if (argc == 2) { // the path of a package
        std::puts(qPrintable(verdict(QFile::decodeName(argv[1]))));
        return 0;
    }
    const QTemporaryDir directory;
    QFile package(directory.filePath("setup.pkg"));
    if (!package.open(QIODevice::WriteOnly) || package.write("not an archive") < 0 || !package.flush())
        return 1;
    const bool isGood = verdict(directory.filePath("other.pkg")) == "no such file" &&
        verdict(package.fileName()) == "not an archive, or not signed";
    return isGood ? 0 : 1;
}
