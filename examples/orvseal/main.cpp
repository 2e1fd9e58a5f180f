#include "Commands.h"
#include "Console.h"
#include "Vault.h"
#include "Work.h"

#include <Orv/Core/Encryption/Key.h>
#include <Orv/Core/Version.h>
#include <Orv/Log/LogManager.h>
#include <Orv/Log/OrvDebug.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QMap>
#include <QMetaEnum>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

// File names are UTF-8, whatever the locale. Qt 6 sees to it; with Qt 5, the C locale would let few of them through.
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>

static void useUtf8()
{
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}
#else
static void useUtf8()
{
}
#endif

using namespace orvseal;
using Orv::Exception::Base;
using namespace Orv::Core::Encryption;

namespace {

constexpr int NothingDone = 2;    // exit status
constexpr int SignalStatus = 128; // exit status, plus the signal's number
constexpr int MostJobs = 64;      // each has two files open

constexpr char Description[] = R"(Seals a folder into an encrypted vault, and opens it again.

  orvseal seal SOURCE VAULT              makes the vault VAULT, a new or empty folder outside SOURCE, or updates it
  orvseal open VAULT TARGET [PATH...]    puts what is in VAULT, or only these paths with what is in them, into TARGET,
                                         a new or empty folder
  orvseal verify VAULT                   reads all that is in VAULT and names what is damaged
  orvseal list VAULT                     lists what is in VAULT, times in UTC

An update seals what is new or changed, keeps the sealed files whose source has the size and the modification time that
it had, and removes what is gone. Until it is finished, the vault is as it was. What cannot be read now stays in the
vault as it was, and is named.

Files, folders, links and hard links are sealed with their permissions, owners, groups and modification times; links are
not followed. Extended attributes, access control lists, and the set-user-ID and set-group-ID bits are not kept, but
counted. Sockets, pipes, devices, files whose data is only with a cloud service, and names that are not valid UTF-8 are
skipped, and each one is named.

The password is what --password-file holds, less a newline at its end; or else the environment variable
ORVSEAL_PASSWORD; or else it is asked for on the terminal.

Exit status: 0, all done; 1, some entries could not be done or were skipped, each one named; 2, nothing could be done,
or the disk is full, or standard output takes no more; 129, 130 or 143, interrupted by SIGHUP, SIGINT or SIGTERM. Where
it is 2 or more, "seal" leaves the vault as it was, or no vault, and "open" leaves only complete files.)";

/// The library's algorithms that have a key, by their names in lower case.
QMap<QString, Algorithm> algorithms()
{
    QMap<QString, Algorithm> byName;
    const QMetaEnum all = QMetaEnum::fromType<Algorithm>();
    for (int i = 0; i < all.keyCount(); ++i) {
        const auto algorithm = static_cast<Algorithm>(all.value(i));
        if (Key::length(algorithm) > 0)
            byName.insert(QString::fromLatin1(all.key(i)).toLower(), algorithm);
    }
    return byName;
}

QString validAlgorithms()
{
    return QStringList(algorithms().keys()).join(QStringLiteral(", "));
}

Algorithm algorithmOf(const QString& name)
{
    const Algorithm algorithm = algorithms().value(name, None);
    if (algorithm == None)
        throw Base(QStringLiteral("there is no algorithm \"%1\"; there are %2").arg(name, validAlgorithms()));
    return algorithm;
}

int numberOf(const QCommandLineParser& parser, const QCommandLineOption& option, int smallest, int largest)
{
    bool isNumber = false;
    const int number = parser.value(option).toInt(&isNumber);
    if (!isNumber || number < smallest || number > largest)
        throw Base(QStringLiteral("--%1 has to be a number from %2 to %3")
                       .arg(option.names().constFirst())
                       .arg(smallest)
                       .arg(largest));
    return number;
}

/// Sends what the program and the library log to a file in `folder`, or nowhere: never to the terminal.
void startLog(const QString& folder)
{
    Orv::LogManager& log = Orv::LogManager::instance();
    if (folder.isEmpty()) {
        log.setLogLevel(Orv::LogManager::Disabled);
    } else {
        // The library would wait in silence for the folder and the file to become usable.
        if (!QDir().mkpath(folder))
            throw Base(QStringLiteral("the log folder %1 cannot be made").arg(folder));
        QFile file(folder + QStringLiteral("/log_orvseal.log"));
        if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
            throw Base(QStringLiteral("the log %1 cannot be written: %2").arg(file.fileName(), file.errorString()));
        log.setAppPrefix(QStringLiteral("orvseal"));
        log.setLogPath(folder);
        log.setLogLevel(Orv::LogManager::InfoHigh);
        log.setOutToFile(true);
    }
    log.init();
}

/// A path from outside. Qt would look for one that begins with a colon among its own resources.
QString pathOf(const QString& argument)
{
    return argument.startsWith(':') ? QStringLiteral("./") + argument : argument;
}

/// The arguments after the command: paths.
QStringList argumentsOf(const QCommandLineParser& parser, int least, int most)
{
    QStringList arguments = parser.positionalArguments().mid(1);
    if (arguments.size() < least || arguments.size() > most || arguments.contains(QString()))
        throw Base(QStringLiteral("wrong number of arguments; see orvseal --help"));
    std::transform(arguments.begin(), arguments.end(), arguments.begin(), pathOf);
    return arguments;
}

void run(Report& report)
{
    const QCommandLineOption algorithm(QStringLiteral("algorithm"),
        QStringLiteral("For a new vault: the cipher, one of %1. Default: aes256.").arg(validAlgorithms()),
        QStringLiteral("NAME"));
    const QCommandLineOption iterations(QStringLiteral("iterations"),
        QStringLiteral(
            "For a new vault: how often the password is hashed, from %1 to %2. Fewer are faster, for programs "
            "whose passwords are random, and easier to guess. Default: 1300000.")
            .arg(Key::ITERATION_ADVANCED)
            .arg(MostIterations),
        QStringLiteral("N"));
    const QCommandLineOption force(
        QStringLiteral("force"), QStringLiteral("For \"seal\": read all files, also those that seem unchanged."));
    const QCommandLineOption jobs(QStringLiteral("jobs"),
        QStringLiteral("How many files to work on at a time. Default: the number of processors."), QStringLiteral("N"),
        QString::number(std::clamp(QThread::idealThreadCount(), 1, MostJobs)));
    const QCommandLineOption passwordFile(
        QStringLiteral("password-file"), QStringLiteral("The file with the password."), QStringLiteral("F"));
    const QCommandLineOption logFolder(QStringLiteral("log-dir"),
        QStringLiteral("Write the log file log_orvseal.log in this folder. Default: no log."), QStringLiteral("D"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QLatin1String(Description));
    // Qt's own option would bring along --help-all, which has nothing to add.
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Shows this help."));
    parser.addOptions({algorithm, iterations, force, jobs, passwordFile, logFolder, help});
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("seal, open, verify or list."));
    parser.addPositionalArgument(
        QStringLiteral("arguments"), QStringLiteral("As above."), QStringLiteral("argument..."));
    if (!parser.parse(QCoreApplication::arguments()))
        throw Base(parser.errorText());
    if (parser.isSet(help)) {
        print(parser.helpText());
        return;
    }

    const QString command = parser.positionalArguments().value(0);
    Options options;
    if (parser.isSet(algorithm))
        options.algorithm = algorithmOf(parser.value(algorithm));
    if (parser.isSet(iterations))
        options.iterations = numberOf(parser, iterations, Key::ITERATION_ADVANCED, MostIterations);
    options.jobs = numberOf(parser, jobs, 1, MostJobs);
    options.force = parser.isSet(force);
    if (parser.isSet(passwordFile))
        options.passwordFile = pathOf(parser.value(passwordFile));
    for (const QCommandLineOption& option : {algorithm, iterations, force}) {
        if (parser.isSet(option) && command != QLatin1String("seal"))
            throw Base(QStringLiteral("--%1 is for \"seal\" alone").arg(option.names().constFirst()));
    }

    startLog(pathOf(parser.value(logFolder)));
    Orv::OrvDebug("orvseal").info() << command << "begins," << Orv::Core::Version::string();
    if (command == QLatin1String("seal")) {
        const QStringList folders = argumentsOf(parser, 2, 2);
        sealFolder(folders[0], folders[1], options, report);
    } else if (command == QLatin1String("open")) {
        const QStringList arguments = argumentsOf(parser, 2, std::numeric_limits<int>::max());
        openVault(arguments[0], arguments[1], arguments.mid(2), options, report);
    } else if (command == QLatin1String("verify")) {
        verifyVault(argumentsOf(parser, 1, 1)[0], options, report);
    } else if (command == QLatin1String("list")) {
        listVault(argumentsOf(parser, 1, 1)[0], options);
    } else {
        throw Base(QStringLiteral("the command has to be seal, open, verify or list; see orvseal --help"));
    }
}

/// Gives a standard stream that the caller has closed something empty that cannot be written: its number would go to a
/// file of ours, and what is printed into that file.
void openStandardStreams()
{
    int descriptor = STDIN_FILENO;
    while (descriptor >= STDIN_FILENO && descriptor <= STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(descriptor);
}

void requireOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw Base(QStringLiteral("standard output cannot be written"));
}

} // namespace

int main(int argc, char* argv[])
{
    openStandardStreams();
    useUtf8();
    const QCoreApplication application(argc, argv);
    catchInterrupts();

    Report report;
    QString failure;
    try {
        run(report);
        requireOutput();
    } catch (const std::exception& exception) {
        failure = printable(QString::fromUtf8(exception.what()));
    }
    report.showProblems();
    if (failure.isNull())
        return report.exitStatus();
    if (Orv::LogManager::instance().isInit()) // before, it would come to the terminal
        Orv::OrvDebug("orvseal").error() << failure;
    std::fprintf(stderr, "orvseal: %s\n", qUtf8Printable(failure));
    return interruptSignal() != 0 ? SignalStatus + interruptSignal() : NothingDone;
}
