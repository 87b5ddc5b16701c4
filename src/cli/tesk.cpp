// The tesk command line tool.

#include <fcntl.h>
#include <new>
#include <unistd.h>

#include "cli/CommandLine.h"
#include "cli/CompareImages.h"
#include "cli/FatalErrors.h"
#include "cli/FileModes.h"
#include "cli/MemoryModes.h"

namespace {

/// Takes the numbers of closed standard streams, so that no file gets them and messages with it.
/// A folder cannot be written, neither here nor as /dev/stdout.
void occupyClosedStreams() {
    int number = open("/", O_RDONLY | O_DIRECTORY);
    while (number >= 0 && number <= STDERR_FILENO)
        number = open("/", O_RDONLY | O_DIRECTORY);
    if (number >= 0) close(number);
}

int run(const qmx::CommandLine& line) {
    switch (line.action) {
        case qmx::Action::compress:
            return line.inMemory ? qmx::compressInMemory(line) : qmx::compressFile(line);
        case qmx::Action::decompress:
            return line.inMemory ? qmx::decompressInMemory(line) : qmx::decompressFile(line);
        case qmx::Action::compare:
            return qmx::compareFiles(line);
    }
    return 1;
}

}  // namespace

// Thrown numbers are not caught here: they end the process by abort, after the fatal error handler
// has named the file and the reason.
int main(int argc, char** argv) {
    occupyClosedStreams();
    const auto line = qmx::parseCommandLine(argc, argv);
    if (!line) return qmx::usage(1);
    qmx::installFatalErrorHandler();
    try {
        return run(*line);
    } catch (const std::bad_array_new_length&) {
        return qmx::reportImpossibleSize();
    } catch (const std::bad_alloc&) {
        return qmx::reportOutOfMemory();
    } catch (const qmx::FileError& error) {
        return qmx::reportFileError(error, *line);
    }
}
