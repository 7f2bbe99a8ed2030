// SPDX-License-Identifier: GPL-3.0-or-later

// process-timer RUNS COMMAND [ARGUMENT...]: runs a command, without input and
// with its output dropped, and prints the median and the shortest wall time in
// milliseconds and the largest peak memory in MiB. Fails when the command does.

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

extern char** environ;

namespace {

double milliseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

struct Run {
    double wall = 0;
    double peak = 0;
    bool isGood = false;
};

Run runOnce(char** command) {
    posix_spawn_file_actions_t streams;
    posix_spawn_file_actions_init(&streams);
    posix_spawn_file_actions_addopen(&streams, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&streams, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    Run run;
    pid_t process = 0;
    int status = 0;
    rusage use{};
    const double start = milliseconds();
    if (posix_spawnp(&process, command[0], &streams, nullptr, command, environ) == 0 &&
        wait4(process, &status, 0, &use) == process) {
        run.wall = milliseconds() - start;
        run.peak = static_cast<double>(use.ru_maxrss) / 1024;
        run.isGood = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    posix_spawn_file_actions_destroy(&streams);
    return run;
}

}  // namespace

int main(int count, char** words) {
    const int runs = count > 2 ? std::atoi(words[1]) : 0;
    if (runs < 1) {
        std::fputs("usage: process-timer RUNS COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    std::vector<double> walls;
    double peak = 0;
    for (int i = 0; i < runs; ++i) {
        const Run run = runOnce(words + 2);
        if (!run.isGood) {
            std::fprintf(stderr, "%s failed\n", words[2]);
            return 1;
        }
        walls.push_back(run.wall);
        peak = std::max(peak, run.peak);
    }
    std::sort(walls.begin(), walls.end());
    std::printf("%.4f %.4f %.2f\n", walls[walls.size() / 2], walls[0], peak);
}
