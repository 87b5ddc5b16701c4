#include <atomic>
#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>

#include "support/CodecCalls.h"
#include "support/CodecObjects.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::Call;
using test::Content;
using test::RawImage;

constexpr int kCodecs = 16;
constexpr int kRounds = 12;

/// What a worker lets the stopper stop, if anything.
class Stoppable {
public:
    template <class Stop>
    void offer(Stop stopIt) {
        const std::lock_guard lock(mutex);
        stop = stopIt;
    }
    void withdraw() {
        const std::lock_guard lock(mutex);
        stop = nullptr;
    }
    void request(std::uint64_t number) {
        const std::lock_guard lock(mutex);
        if (stop) stop(number);
    }

private:
    // It keeps objects alive while they are stopped, and no more: stops meet running coders.
    std::mutex mutex;
    std::function<void(std::uint64_t)> stop;
};

struct Worker {
    explicit Worker(int index) {
        // Every fourth image has more rows than any ring of rows holds.
        const bool isLarge = index % 4 == 3;
        const int height = isLarge ? 256 + index : 60 + 3 * index;
        // Not every size comes back from its complete stream; the next one that does.
        for (int width = isLarge ? 256 : 40 + 7 * index; image.bytes != test::decode(stream).bytes;
             ++width) {
            image = test::makeImage(Content::noise, 1 + index % 3, index % 3 == 1 ? 16 : 8, width,
                                    height, static_cast<unsigned>(index));
            stream = test::encode(image);
        }
    }

    RawImage image = test::makeImage(Content::noise, 1, 8, 1, 1);
    Bytes stream = test::prefixOf(test::encode(image), 16);
    Stoppable stoppable;
    int complete = 0;
};

template <class Object>
auto stopOrKill(Object& object) {
    return [&object](std::uint64_t number) { number % 2 == 0 ? object.stop() : object.kill(); };
}

void workWithObjects(Worker& worker) {
    const RawImage& image = worker.image;
    CTeskCompressor compressor(image.width, image.height, image.bitsPerPixel, image.bytesPerPixel,
                               image.bytes.data(), test::kAmpleBudget, true);
    worker.stoppable.offer(stopOrKill(compressor));
    const int compressed = compressor.compress();
    worker.stoppable.withdraw();
    EXPECT_TRUE(compressed == kComplete || compressed == kSuspended) << compressed;
    EXPECT_TRUE(compressed == kSuspended || test::streamOf(compressor) == worker.stream);

    CTeskDecompressor decompressor(worker.stream.data(), worker.stream.size());
    Bytes out(image.bytes.size());
    std::atomic<bool> wasKilled{false};
    worker.stoppable.offer([&](std::uint64_t number) {
        if (number % 2 == 0) return decompressor.stop();
        wasKilled = true;
        decompressor.kill();
    });
    const int decompressed = decompressor.decompress(out.data(), out.size());
    worker.stoppable.withdraw();
    EXPECT_TRUE(decompressed == kComplete || decompressed == kSuspended || decompressed == kKilled)
        << decompressed;
    if (decompressed == kComplete && !wasKilled) {
        EXPECT_EQ(out, image.bytes);
        ++worker.complete;
    }
}

void workWithCalls(Worker& worker, tesk_codec* codec) {
    worker.stoppable.offer([codec](std::uint64_t) { tesk_stop(codec); });
    const Call compressed = test::compressCall(codec, worker.image);
    const Call decompressed = test::decompressCall(codec, worker.stream);
    worker.stoppable.withdraw();
    tesk_clear_stop(codec);
    EXPECT_TRUE(compressed.status == TESK_OK || compressed.status == TESK_STOPPED);
    EXPECT_TRUE(decompressed.status == TESK_OK || decompressed.status == TESK_STOPPED);
    // What claims to be complete is, however close the stop was.
    EXPECT_TRUE(compressed.status == TESK_STOPPED || compressed.bytes == worker.stream);
    if (decompressed.status == TESK_OK) {
        EXPECT_EQ(decompressed.bytes, worker.image.bytes);
        ++worker.complete;
    }
}

void work(Worker& worker, int index) {
    // The comparison would find what a stop has left incomplete; half of the codecs do without it.
    const test::Codec codec =
        test::makeCodecWithFlags(index % 8 < 4 ? 0U : std::uint32_t{TESK_UNVERIFIED});
    for (int round = 0; round < kRounds; ++round) {
        if (index % 2 == 0) workWithObjects(worker);
        if (index % 2 == 1) workWithCalls(worker, codec.get());
    }
}

/// Runs all workers, with a stopper if there are to be stops. Returns: images that came back.
int completeImages(bool withStops) {
    std::vector<std::unique_ptr<Worker>> workers;
    for (int i = 0; i < kCodecs; ++i)
        workers.push_back(std::make_unique<Worker>(i));
    std::atomic<bool> done{false};
    std::thread stopper([&] {
        test::Random random(5);
        while (withStops && !done) {
            workers[random.below(kCodecs)]->stoppable.request(random.next());
            std::this_thread::sleep_for(std::chrono::microseconds(random.below(300)));
        }
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < kCodecs; ++i)
        threads.emplace_back([&, i] { work(*workers[static_cast<unsigned>(i)], i); });
    for (std::thread& thread : threads)
        thread.join();
    done = true;
    stopper.join();
    int complete = 0;
    for (const auto& worker : workers)
        complete += worker->complete;
    return complete;
}

TEST(Threads, CodecsDoNotTouchEachOther) {
    EXPECT_EQ(completeImages(false), kCodecs * kRounds);
}

TEST(Threads, CodecsMayBeStoppedAtAnyMoment) {
    const int complete = completeImages(true);
    EXPECT_LT(complete, kCodecs * kRounds) << "no stop met a call";
}

}  // namespace
