// The program tesk-info: what stands in streams of tesk.

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "api/tesk.h"
#include "info/DescribeFile.h"
#include "info/JsonString.h"

namespace {

using qmx::InfoStatus;

InfoStatus describeFiles(const qmx::InfoArguments& arguments) {
    InfoStatus worst = InfoStatus::fine;
    for (const char* name : arguments.files)
        worst = std::max(worst, qmx::describeFile(name, arguments));
    return worst;
}

InfoStatus run(const qmx::InfoArguments& arguments) {
    switch (arguments.task) {
        case qmx::InfoTask::describe:
            return describeFiles(arguments);
        case qmx::InfoTask::help:
            std::fputs(qmx::kInfoHelp, stdout);
            return InfoStatus::fine;
        case qmx::InfoTask::version:
            std::printf("tesk-info %s\n", tesk_version());
            return InfoStatus::fine;
        case qmx::InfoTask::refuse:
            std::fprintf(stderr, "tesk-info: %s; --help says more\n",
                         qmx::onOneLine(arguments.complaint).c_str());
            return InfoStatus::wrongArguments;
    }
    return InfoStatus::wrongArguments;
}

/// Returns: whether all that was printed has arrived.
bool flushOutput() {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
    std::fprintf(stderr, "tesk-info: cannot write standard output: %s\n", std::strerror(errno));
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    const InfoStatus status = run(qmx::parseInfoArguments(argc, argv));
    return static_cast<int>(flushOutput() ? status : std::max(status, InfoStatus::outputLost));
}
