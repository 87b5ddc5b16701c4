// The program tesk-convert: images to streams of tesk, and streams to images.

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <new>
#include <system_error>
#include <unistd.h>

#include "api/tesk.h"
#include "convert/CInterruption.h"
#include "convert/ConvertArguments.h"
#include "convert/ConvertBatch.h"
#include "convert/ConvertPlan.h"
#include "convert/Refusal.h"
#include "info/JsonString.h"

namespace {

constexpr int kRefused = 1;
constexpr int kWrongArguments = 2;

int complain(const std::string& words, int status) {
    std::fprintf(stderr, "tesk-convert: %s%s\n", qmx::onOneLine(words).c_str(),
                 status == kWrongArguments ? "; --help says more" : "");
    return status;
}

int print(const char* format, const char* words) {
    std::printf(format, words);
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return 0;
    return complain("cannot write the standard output", kRefused);
}

int convert(const qmx::ConvertOptions& options) {
    std::vector<qmx::ConvertJob> jobs;
    try {
        jobs = qmx::planConversion(options);
    } catch (const qmx::Refusal& refusal) {
        return complain(refusal.words, kWrongArguments);
    }
    if (jobs.empty()) return complain("there is no file to convert", kRefused);
    return qmx::convertBatch(jobs, options);
}

int run(const qmx::ConvertArguments& arguments) {
    switch (arguments.task) {
        case qmx::ConvertTask::help:
            return print("%s", qmx::kConvertHelp);
        case qmx::ConvertTask::version:
            return print("tesk-convert %s\n", tesk_version());
        case qmx::ConvertTask::refuse:
            return complain(arguments.complaint, kWrongArguments);
        case qmx::ConvertTask::convert:
            return convert(arguments.options);
    }
    return kWrongArguments;
}

/// A file that is opened must not get the number of a standard stream that is closed: what is printed would
/// go into it. What takes their places can be neither read nor written.
void occupyStandardNumbers() {
    for (const int number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(number, F_GETFD) < 0)
            open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

}  // namespace

int main(int argc, char** argv) try {
    occupyStandardNumbers();
    // A reader that goes away is an error like others, with words.
    std::signal(SIGPIPE, SIG_IGN);
    const qmx::CInterruption interruption;
    return run(qmx::parseConvertArguments(argc, argv));
} catch (const qmx::Refusal& refusal) {
    return complain(refusal.words, kRefused);
} catch (const std::bad_alloc&) {
    return complain("there is not enough memory", kRefused);
} catch (const std::system_error& error) {
    return complain(error.what(), kRefused);
}
