/* Stops a compression from another thread, then goes on with the same codec. Whether the stop comes
 * in time depends on the image and the machine; both ways are fine. */

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "support.h"

typedef struct task {
    tesk_codec* codec;
    tesk_image image;
    content pixels;
    tesk_status status;
    void* block;
    tesk_result result;
} task;

static void* run(void* argument) {
    task* t = argument;
    t->status =
        tesk_compress_to_block(t->codec, &t->image, t->pixels.bytes, 0, 0, &t->block, &t->result);
    return NULL;
}

static bool run_and_stop(task* t, long milliseconds) {
    pthread_t worker;
    if (pthread_create(&worker, NULL, run, t) != 0)
        return complain("cancel", "no thread to be had");
    const struct timespec moment = {milliseconds / 1000, milliseconds % 1000 * 1000000};
    nanosleep(&moment, NULL);
    tesk_stop(t->codec);
    pthread_join(worker, NULL);
    printf("stop after %ld ms: %s\n", milliseconds, tesk_status_message(t->status));
    tesk_release_block(t->codec, t->block);
    return t->status == TESK_OK || t->status == TESK_STOPPED ||
           complain("cancel", tesk_status_message(t->status));
}

/* A stop stays in force until it is taken back. */
static bool run_again(task* t) {
    run(t);
    printf("next call: %s\n", tesk_status_message(t->status));
    if (t->status != TESK_STOPPED) {
        tesk_release_block(t->codec, t->block);
        return complain("cancel", "a codec that was stopped has worked");
    }
    tesk_clear_stop(t->codec);
    run(t);
    printf("after tesk_clear_stop: %s\n", tesk_status_message(t->status));
    return t->status == TESK_OK || complain("cancel", tesk_status_message(t->status));
}

static int cancel(task* t, const char* stream_name, long milliseconds) {
    const tesk_status status = tesk_create(NULL, &t->codec);
    if (status != TESK_OK) return fail("cancel", tesk_status_message(status));
    bool done = run_and_stop(t, milliseconds) && run_again(t);
    if (done) {
        done = write_file(stream_name, t->block, t->result.stream_bytes);
        tesk_release_block(t->codec, t->block);
    }
    tesk_destroy(t->codec);
    return done ? SUCCESS : FAILURE;
}

int main(int count, char** arguments) {
    if (count != 7 && count != 8) {
        fputs("usage: cancel " IMAGE_USAGE " STREAM [MILLISECONDS]\n", stderr);
        return WRONG_USAGE;
    }
    const long milliseconds = count == 8 ? strtol(arguments[7], NULL, 10) : 5;
    if (milliseconds < 0) return fail(arguments[7], "not a time to wait");
    task t = {.status = TESK_OK, .result = TESK_RESULT_INIT};
    if (!read_image(arguments + 1, &t.image, &t.pixels)) return FAILURE;
    const int exit_status = cancel(&t, arguments[6], milliseconds);
    free(t.pixels.bytes);
    return exit_status;
}
