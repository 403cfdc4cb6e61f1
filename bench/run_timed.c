/* Runs a command and writes its CPU and wall time in microseconds.
 *
 *   run_timed FILE COMMAND [ARGUMENTS...]
 *
 * FILE receives one line "user_us sys_us wall_us" (the command's own and
 * its waited-for children's user and system time, from wait4's rusage,
 * and the elapsed time around fork and wait). The command keeps this
 * process's standard input, output and error. The exit status is the
 * command's (128 + signal when it was killed). bench/compare.sh builds
 * this with the C compiler on first use: bash's `time` prints whole
 * milliseconds, too coarse for runs of 4 ms. */
#define _GNU_SOURCE
#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static long long micros(struct timeval t) {
  return (long long)t.tv_sec * 1000000LL + t.tv_usec;
}

int main(int argc, char **argv) {
  if (argc < 3) {
    fprintf(stderr, "run_timed: usage: run_timed FILE COMMAND [ARGUMENTS...]\n");
    return 2;
  }
  struct timespec start, end;
  clock_gettime(CLOCK_MONOTONIC, &start);
  pid_t pid = fork();
  if (pid < 0) {
    fprintf(stderr, "run_timed: cannot start %s: %s\n", argv[2], strerror(errno));
    return 2;
  }
  if (pid == 0) {
    execvp(argv[2], argv + 2);
    fprintf(stderr, "run_timed: cannot run %s: %s\n", argv[2], strerror(errno));
    _exit(127);
  }
  int status = 0;
  struct rusage usage;
  while (wait4(pid, &status, 0, &usage) < 0) {
    if (errno != EINTR) {
      fprintf(stderr, "run_timed: waiting for %s: %s\n", argv[2], strerror(errno));
      return 2;
    }
  }
  clock_gettime(CLOCK_MONOTONIC, &end);
  long long wall = (end.tv_sec - start.tv_sec) * 1000000LL + (end.tv_nsec - start.tv_nsec) / 1000;
  FILE *out = fopen(argv[1], "w");
  if (out == NULL) {
    fprintf(stderr, "run_timed: cannot write %s: %s\n", argv[1], strerror(errno));
    return 2;
  }
  fprintf(out, "%lld %lld %lld\n", micros(usage.ru_utime), micros(usage.ru_stime), wall);
  if (fclose(out) != 0) {
    fprintf(stderr, "run_timed: cannot write %s: %s\n", argv[1], strerror(errno));
    return 2;
  }
  if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
  return WEXITSTATUS(status);
}
