// Signals, waited for by a thread of their own; see signals.h.
#include "signals.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigwait and sigaction
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "errors.h"

namespace vidproc::tool {
namespace {

std::mutex filesMutex;  // held while a file is made or changes its name, and for good once a signal ends the process

std::set<std::string>& UnfinishedFiles() {
  static auto* const kFiles = new std::set<std::string>;  // outlives every thread
  return *kFiles;
}

void EndOnSignal(const sigset_t& signals) {
  int number = 0;
  if (sigwait(&signals, &number) != 0) return;
  filesMutex.lock();
  for (const std::string& path : UnfinishedFiles()) unlink(path.c_str());
  if (number == SIGINT || number == SIGTERM) PrintError("interrupted; no output was kept");
  signal(number, SIG_DFL);
  sigset_t one;
  sigemptyset(&one);
  sigaddset(&one, number);
  raise(number);
  pthread_sigmask(SIG_UNBLOCK, &one, nullptr);
}

}  // namespace

void HandleSignals() {
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
    struct sigaction action {};
    sigaction(number, nullptr, &action);
    const bool isNohup = number == SIGHUP && action.sa_handler == SIG_IGN;
    if (!isNohup) sigaddset(&signals, number);
  }
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread([signals] { EndOnSignal(signals); }).detach();
}

int MakeUnfinishedFile(std::string& path) {
  const std::lock_guard lock(filesMutex);  // a signal finds no file without its name
  const int descriptor = mkostemp(path.data(), O_CLOEXEC);
  if (descriptor >= 0) UnfinishedFiles().insert(path);
  return descriptor;
}

int EndUnfinishedFile(const std::string& path, const std::string& finalPath) {
  const std::lock_guard lock(filesMutex);
  const int result = finalPath.empty() ? unlink(path.c_str()) : std::rename(path.c_str(), finalPath.c_str());
  if (result != 0) return errno;
  UnfinishedFiles().erase(path);
  return 0;
}

}  // namespace vidproc::tool
