#include "convert/PartFiles.h"

#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <unistd.h>

namespace qmx {
namespace {

std::mutex& partFilesMutex() {
    static std::mutex mutex;
    return mutex;
}

std::set<std::string>& partFiles() {
    static std::set<std::string> names;
    return names;
}

}  // namespace

int openPartFile(const std::string& name, mode_t permissions) {
    const std::lock_guard lock(partFilesMutex());
    const bool isNew = partFiles().insert(name).second;
    const int number =
        open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, permissions);
    const int reason = errno;
    if (number < 0 && isNew) partFiles().erase(name);
    errno = reason;
    return number;
}

void forgetPartFile(const std::string& name) {
    const std::lock_guard lock(partFilesMutex());
    partFiles().erase(name);
}

void removePartFilesForGood() {
    partFilesMutex().lock();
    for (const std::string& name : partFiles())
        unlink(name.c_str());
}

}  // namespace qmx
