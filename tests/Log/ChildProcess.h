#pragma once

#include "Files.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

/// How a child process ended.
struct Ending {
    int exitCode = -1; // if it exited
    int signal = 0;    // if a signal ended it
};

/// Runs `work` and then `exit(0)` in a child process: logging is set up once a process, and some of it ends the
/// process. What the child writes to its standard streams goes to `outputPath`.
inline Ending runInChild(const std::function<void()>& work, const QString& outputPath = QStringLiteral("/dev/null"))
{
    std::fflush(nullptr); // or the child would write it once more
    const pid_t child = ::fork();
    if (child == 0) {
        const int output = ::open(QFile::encodeName(outputPath).constData(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(output, STDERR_FILENO);
        ::alarm(300); // a child that hangs must not outlive its test
        work();
        std::exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    Ending ending;
    if (WIFEXITED(status))
        ending.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status))
        ending.signal = WTERMSIG(status);
    return ending;
}

/// Runs `work` in a child process and expects that it comes to its end and that nothing fails in it.
inline void expectInChild(const std::function<void()>& work, const QString& outputPath = QStringLiteral("/dev/null"))
{
    const Ending ending = runInChild(
        [&work] {
            work();
            std::exit(testing::Test::HasFailure() ? 1 : 0);
        },
        outputPath);
    EXPECT_EQ(ending.exitCode, 0) << contentOf(outputPath).constData();
    EXPECT_EQ(ending.signal, 0);
}
