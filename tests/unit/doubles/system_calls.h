// The system's own functions, and the doubles that the linker puts before them.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>
#include <termios.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <ctime>

extern "C" {
pid_t __real_fork();
pid_t __wrap_fork();
pid_t __real_getpid();
pid_t __wrap_getpid();
pid_t __real_waitpid(pid_t pid, int *status, int options);
pid_t __wrap_waitpid(pid_t pid, int *status, int options);
int __real_kill(pid_t pid, int signal);
int __wrap_kill(pid_t pid, int signal);
unsigned __real_sleep(unsigned seconds);
unsigned __wrap_sleep(unsigned seconds);
time_t __real_time(time_t *result);
time_t __wrap_time(time_t *result);
int __real_system(const char *command);
int __wrap_system(const char *command);
int __real_execve(const char *path, char *const arguments[], char *const environment[]);
int __wrap_execve(const char *path, char *const arguments[], char *const environment[]);
[[noreturn]] void __real__exit(int status);
void __wrap__exit(int status);
int __real_close(int fd);
int __wrap_close(int fd);
int __real_ftruncate(int fd, off_t size);
int __wrap_ftruncate(int fd, off_t size);
off_t __real_lseek(int fd, off_t offset, int whence);
off_t __wrap_lseek(int fd, off_t offset, int whence);
void *__real_calloc(size_t count, size_t size);
void *__wrap_calloc(size_t count, size_t size);
void __real_free(void *block);
void __wrap_free(void *block);
FILE *__real_fopen(const char *path, const char *mode);
FILE *__wrap_fopen(const char *path, const char *mode);
int __real_fclose(FILE *file);
int __wrap_fclose(FILE *file);
int __real_fileno(FILE *file);
int __wrap_fileno(FILE *file);
int __real_remove(const char *path);
int __wrap_remove(const char *path);
int __real_stat(const char *path, struct stat *result);
int __wrap_stat(const char *path, struct stat *result);
int __real_tcgetattr(int fd, termios *attributes);
int __wrap_tcgetattr(int fd, termios *attributes);
int __real_tcsetattr(int fd, int actions, const termios *attributes);
int __wrap_tcsetattr(int fd, int actions, const termios *attributes);
int __real_tcflush(int fd, int queue);
int __wrap_tcflush(int fd, int queue);
int __real_sigaction(int signal, const struct sigaction *action, struct sigaction *before);
int __wrap_sigaction(int signal, const struct sigaction *action, struct sigaction *before);
int __real_sigprocmask(int how, const sigset_t *set, sigset_t *before);
int __wrap_sigprocmask(int how, const sigset_t *set, sigset_t *before);
char *__real_dcgettext(const char *domain, const char *message, int category);
char *__wrap_dcgettext(const char *domain, const char *message, int category);
}

namespace doubles {

// Ends a child of a test, without the exit handlers that it has from its parent. What it counted for ./dev coverage is saved.
[[noreturn]] void leave(int status);

}  // namespace doubles
