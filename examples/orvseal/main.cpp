#include "Commands.h"
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
#include <QThread>
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QTextCodec>
#endif

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace orvseal;
using namespace Orv::Core::Encryption;

namespace {

constexpr int NothingDone = 2;    // exit status
constexpr int SignalStatus = 128; // exit status, plus the signal's number
constexpr int MostJobs = 64;

constexpr char Description[] = R"(Seals a directory into an encrypted vault, and restores it.

  orvseal seal SOURCE VAULT              creates VAULT, a new or empty directory outside SOURCE, or updates it
  orvseal open VAULT TARGET [PATH...]    restores everything in VAULT, or these paths with their content, into TARGET,
                                         a new or empty directory
  orvseal verify VAULT                   reads everything in VAULT and reports damage
  orvseal list VAULT                     lists the entries of VAULT, times in UTC

An update seals new and changed files, keeps the sealed file if size and modification time of the source are unchanged,
and removes entries that no longer exist in SOURCE. Until it is finished, the vault stays as it was. Entries that cannot
be read now are reported, and the vault keeps its version of them.

Files, directories, links and hard links are sealed with their permissions, owners, groups and modification times; links
are not followed. Extended attributes, access control lists, and the set-user-ID and set-group-ID bits are counted, but
not kept. Sockets, pipes, devices and names that are not valid UTF-8 are skipped and reported. A file whose data is only in
a cloud service counts as one that cannot be read.

The password is read from the file that --password-file names, without a newline at its end; or from the environment
variable ORVSEAL_PASSWORD; or from the terminal.

Exit status: 0, success; 1, some entries failed or were skipped, each one reported; 2, nothing could be done, or the
disk is full, or standard output cannot be written; 129, 130 or 143, interrupted by SIGHUP, SIGINT or SIGTERM. If it is
2 or more, "seal" leaves a complete vault, the old or the new one, or none, and "open" leaves only complete files.)";

/// The algorithm names on the command line, which are those of the library in lower case
const QMap<QString, Algorithm> Algorithms = {
    {"aes128", Aes128}, {"aes192", Aes192}, {"aes256", Aes256}, {"des", Des}, {"des112", Des112}, {"des3", Des3}};

int numberOf(const QCommandLineParser& parser, const QString& option, int smallest, int largest)
{
    bool isNumber = false;
    const int number = parser.value(option).toInt(&isNumber);
    if (!isNumber || number < smallest || number > largest)
        fail("--%1 has to be a number from %2 to %3", option, QString::number(smallest), QString::number(largest));
    return number;
}

/// Sends what the program and the library log to a file in `directory`, or nowhere: never to the terminal.
void startLog(const QString& directory)
{
    Orv::LogManager& log = Orv::LogManager::instance();
    log.setLogLevel(directory.isEmpty() ? Orv::LogManager::Disabled : Orv::LogManager::InfoHigh);
    if (!directory.isEmpty()) {
        // The library would wait in silence until the file can be written.
        QFile file(directory + "/log_orvseal.log");
        if (!QDir().mkpath(directory) || !file.open(QIODevice::WriteOnly | QIODevice::Append))
            fail("the log %1 cannot be written: %2", file.fileName(), file.errorString());
        log.setAppPrefix("orvseal");
        log.setLogPath(directory);
        log.setOutToFile(true);
    }
    log.init();
}

/// A path from outside. Qt would look for one that begins with a colon among its own resources.
QString pathOf(const QString& argument)
{
    return argument.startsWith(':') ? "./" + argument : argument;
}

/// Raises the limit of open files if `jobs` need it. Returns how many jobs the limit allows.
int jobsWithFiles(int jobs)
{
    constexpr rlim_t FilesPerJob = 16; // when sealing: eight files and their sealed files
    constexpr rlim_t OtherFiles = 64;
    for (rlimit limit{}; ::getrlimit(RLIMIT_NOFILE, &limit) == 0; --jobs) {
        const rlim_t wanted = OtherFiles + FilesPerJob * rlim_t(jobs);
        if (limit.rlim_cur >= wanted)
            break;
        limit.rlim_cur = std::min(limit.rlim_max, wanted);
        if ((::setrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur == wanted) || jobs == 1)
            break;
    }
    return jobs;
}

void runCommand(const QString& command, QStringList arguments, const Options& options, Report& report)
{
    std::transform(arguments.begin(), arguments.end(), arguments.begin(), pathOf);
    const int count = arguments.contains(QString()) ? 0 : int(arguments.size());
    if (command == "seal" && count == 2)
        sealDirectory(arguments[0], arguments[1], options, report);
    else if (command == "open" && count >= 2)
        openVault(arguments[0], arguments[1], arguments.mid(2), options, report);
    else if (command == "verify" && count == 1)
        verifyVault(arguments[0], options, report);
    else if (command == "list" && count == 1)
        listVault(arguments[0], options);
    else
        fail("wrong command, or wrong number of arguments; see orvseal --help");
}

void run(Report& report)
{
    const QString names = QStringList(Algorithms.keys()).join(", ");
    QCommandLineParser parser;
    parser.setApplicationDescription(Description);
    parser.addOptions({
        {"algorithm", QString("For a new vault: the cipher, one of %1. Default: aes256.").arg(names), "NAME"},
        {"iterations",
            QString("For a new vault: how often the password is hashed, from %1 to %2. A smaller number is faster, for "
                    "programs with random passwords, and easier to guess. Default: 1300000.")
                .arg(Key::ITERATION_ADVANCED)
                .arg(MostIterations),
            "N"},
        {"force", "For \"seal\": read all files, also those that seem unchanged."},
        {"jobs", "How many files to process at a time. Default: the number of processors.", "N",
            QString::number(std::clamp(QThread::idealThreadCount(), 1, MostJobs))},
        {"password-file", "The file with the password.", "F"},
        {"log-dir", "Write the log file log_orvseal.log in this directory. Default: no log.", "D"},
        {{"h", "help"}, "Shows this help."}, // Qt's own option would add --help-all, which has nothing to add
    });
    parser.addPositionalArgument("command", "seal, open, verify or list.");
    parser.addPositionalArgument("arguments", "As above.", "argument...");
    if (!parser.parse(QCoreApplication::arguments()))
        throw Orv::Exception::Base(parser.errorText());
    if (parser.isSet("help")) {
        print(parser.helpText());
        return;
    }

    const QStringList arguments = parser.positionalArguments();
    const QString command = arguments.value(0);
    for (const char* const option : {"algorithm", "iterations", "force"}) {
        if (parser.isSet(option) && command != "seal")
            fail("--%1 is only for \"seal\"", QString(option));
    }
    Options options;
    options.algorithm = Algorithms.value(parser.value("algorithm"), None);
    if (parser.isSet("algorithm") && options.algorithm == None)
        fail("--algorithm has to be one of %1", names);
    if (parser.isSet("iterations"))
        options.iterations = numberOf(parser, "iterations", Key::ITERATION_ADVANCED, MostIterations);
    options.jobs = jobsWithFiles(numberOf(parser, "jobs", 1, MostJobs));
    options.force = parser.isSet("force");
    options.passwordFile = pathOf(parser.value("password-file"));

    startLog(pathOf(parser.value("log-dir")));
    Orv::OrvDebug("orvseal").info() << command << "begins," << Orv::Core::Version::string();
    runCommand(command, arguments.mid(1), options, report);
}

/// Opens standard streams that the caller has closed, for nothing: otherwise their numbers would go to files of ours.
void openStandardStreams()
{
    int descriptor = STDIN_FILENO;
    while (descriptor >= STDIN_FILENO && descriptor <= STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(descriptor);
}

} // namespace

int main(int argc, char* argv[])
{
    openStandardStreams();
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    // File names are UTF-8 in any locale. Qt 5 could not encode most of them in the C locale.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    const QCoreApplication application(argc, argv);
    catchInterrupts();

    Report report;
    QString failure;
    try {
        run(report);
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
            fail("standard output cannot be written");
    } catch (const std::exception& exception) {
        failure = printable(QString::fromUtf8(exception.what()));
    }
    report.showProblems();
    if (failure.isNull())
        return report.exitStatus();
    if (Orv::LogManager::instance().isInit()) // before that, it would be written to the terminal
        Orv::OrvDebug("orvseal").error() << failure;
    std::fprintf(stderr, "orvseal: %s\n", qUtf8Printable(failure));
    return interruptSignal() != 0 ? SignalStatus + interruptSignal() : NothingDone;
}
