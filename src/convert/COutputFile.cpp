#include "convert/COutputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>

#include "convert/PartFiles.h"
#include "convert/Refusal.h"

namespace qmx {
namespace {

constexpr char kPartEnding[] = ".part-";
/// What most file systems let a name have.
constexpr std::size_t kLongestNameBytes = 255;
/// So many files that killed processes left under the same number are passed by.
constexpr int kMostLeftFiles = 1000;
constexpr std::size_t kLeftFileDigits = 3;

[[noreturn]] void refuseWriting(const std::string& name, int errorNumber) {
    throw Refusal{"cannot write '" + name + "': " + std::strerror(errorNumber)};
}

std::string folderOf(const std::string& name) {
    const std::string folder = std::filesystem::path(name).parent_path().string();
    return folder.empty() ? "." : folder;
}

/// A long name loses its end for the time being: the number of the process tells two of them apart.
std::string partNameOf(const std::string& name) {
    const std::string ending = kPartEnding + std::to_string(getpid());
    std::string own = std::filesystem::path(name).filename().string();
    if (own.size() + ending.size() + 1 + kLeftFileDigits > kLongestNameBytes)
        own = std::to_string(std::hash<std::string>()(own));
    return (std::filesystem::path(name).parent_path() / ("." + own + ending)).string();
}

/// Whether the name leads to what is written as it is: a device, a pipe.
bool isNoRegularFile(const std::string& name) {
    struct stat facts {};
    return stat(name.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode) && !S_ISDIR(facts.st_mode);
}

/// Opens a new file. Processes in containers often have the same number: where one that was killed left its
/// file, the name gets digits behind it. Returns: -1 where that cannot be done.
int openPart(std::string& partName, mode_t permissions) {
    const std::string first = partName;
    int number = openPartFile(partName, permissions);
    for (int i = 0; number < 0 && errno == EEXIST && i < kMostLeftFiles; ++i) {
        partName = first + std::to_string(i);
        number = openPartFile(partName, permissions);
    }
    return number;
}

int openOutput(const std::string& name, std::string& partName, OutputRules rules) {
    if (!partName.empty() && !rules.overwrites) requireFreeName(name);
    // Others must not open a file in the moment before it gets its permissions.
    const mode_t atFirst = rules.permissions ? *rules.permissions & 0600 : 0666;
    const int number =
        partName.empty() ? open(name.c_str(), O_WRONLY | O_CLOEXEC) : openPart(partName, atFirst);
    if (number < 0) refuseWriting(name, errno);
    // Where a file system knows no permissions there is nothing to be done.
    if (!partName.empty() && rules.permissions) (void)fchmod(number, *rules.permissions & 0777);
    return number;
}

/// Returns: 0, or the number of the error.
int writeAll(int number, ByteView bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(number, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR) return errno;
        if (count > 0) bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return 0;
}

/// Gives a file a name that must be free. Returns: 0, or the number of the error.
int renameToFree(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
    // Some file systems cannot do that, but all that have links can.
    if (errno != EINVAL && errno != ENOSYS) return errno;
    if (link(from.c_str(), to.c_str()) != 0) return errno;
    unlink(from.c_str());
    return 0;
}

}  // namespace

COutputFile::COutputFile(const std::string& outputName, OutputRules outputRules)
    : name(outputName),
      partName(isNoRegularFile(outputName) ? "" : partNameOf(outputName)),
      rules(outputRules),
      file(openOutput(name, partName, rules)) {}

COutputFile::~COutputFile() {
    if (partName.empty()) return;
    unlink(partName.c_str());
    forgetPartFile(partName);
}

void COutputFile::write(ByteView bytes) {
    const int errorNumber = writeAll(file.get(), bytes);
    if (errorNumber != 0) refuseWriting(name, errorNumber);
}

void COutputFile::finish() {
    if (!partName.empty() && rules.times) (void)futimens(file.get(), rules.times->data());
    if (rules.reachesDisk && !partName.empty() && fsync(file.get()) != 0)
        refuseWriting(name, errno);
    // Some file systems tell only now that there was no room.
    if (close(file.release()) != 0) refuseWriting(name, errno);
    if (partName.empty()) return;
    takeName();
    forgetPartFile(partName);
    partName.clear();
    if (rules.reachesDisk) syncFolder(folderOf(name));
}

void COutputFile::takeName() {
    int errorNumber = 0;
    if (!rules.overwrites) {
        errorNumber = renameToFree(partName, name);
    } else if (std::rename(partName.c_str(), name.c_str()) != 0) {
        errorNumber = errno;
    }
    if (errorNumber == EEXIST) requireFreeName(name);
    if (errorNumber != 0) refuseWriting(name, errorNumber);
}

void syncFolder(const std::string& folder) {
    const CFileNumber number(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (number.get() < 0 || fsync(number.get()) != 0) refuseWriting(folder, errno);
}

void requireFreeName(const std::string& name) {
    struct stat facts {};
    if (lstat(name.c_str(), &facts) == 0)
        throw Refusal{"'" + name + "' is there already: -f writes over it"};
}

void CStandardOutput::write(ByteView bytes) {
    const int errorNumber = writeAll(STDOUT_FILENO, bytes);
    if (errorNumber != 0)
        throw Refusal{std::string("cannot write the standard output: ") +
                      std::strerror(errorNumber)};
}

bool isPartName(const std::string& fileName) {
    const std::size_t at = fileName.rfind(kPartEnding);
    const std::string digits =
        at == std::string::npos ? "" : fileName.substr(at + sizeof kPartEnding - 1);
    return fileName.starts_with('.') && !digits.empty() &&
           digits.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace qmx
