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

/// Runs `work` and then `exit(0)` in a child process, because logging is configured once per process and some tests end
/// the process. Redirects the child's standard streams to `outputPath`.
inline Ending runInChild(const std::function<void()>& work, const QString& outputPath = QStringLiteral("/dev/null"))
{
    std::fflush(nullptr); // otherwise the child would write it too
    const pid_t child = ::fork();
    if (child == 0) {
        const int output = ::open(QFile::encodeName(outputPath).constData(), O_WRONLY | O_CREAT | O_APPEND, 0600);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(output, STDERR_FILENO);
        ::alarm(300); // ends a child that hangs
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

/// Runs `work` in a child process and expects that it completes without failures.
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
