/* The smallest complete host: Alice talks for one second, Bob listens. */
#include <quenlis.h>
#include <stdio.h>

enum { RATE = 48000, FRAMES = 480, ROOM = 1, ALICE = 1, BOB = 2 };

/* Says what failed and how. Returns whether the call did what it should. */
static bool succeeded(const char* call, int code) {
    if (code != QNL_ERROR_NONE)
        fprintf(stderr, "%s: %s\n", call, qnl_error_code_to_string(code));
    return code == QNL_ERROR_NONE;
}

/* One block of a 1 kHz square tone. A real host takes it from the microphone. */
static void capture(float* block) {
    for (int i = 0; i < FRAMES; i++)
        block[i] = i / 24 % 2 ? -0.25f : 0.25f;
}

static float peak(const float* samples, int count) {
    float highest = 0;
    for (int i = 0; i < count; i++)
        if (samples[i] > highest)
            highest = samples[i];
    return highest;
}

static bool hold_conference(qnl_handle engine) {
    const qnl_participant_configuration mono = {RATE, 1, QNL_PARTICIPANT_REGULAR};
    float talk[FRAMES], mix[2 * FRAMES], heard = 0;

    if (!succeeded("create room", qnl_create_room(engine, ROOM)) ||
        !succeeded("add Alice", qnl_add_participant(engine, ROOM, ALICE, "Alice", mono)) ||
        !succeeded("add Bob", qnl_add_participant(engine, ROOM, BOB, "Bob", mono)))
        return false;

    for (int block = 0; block < RATE / FRAMES; block++) {
        capture(talk);
        if (!succeeded("push", qnl_input_audio_float(engine, ROOM, ALICE, talk, FRAMES)) ||
            !succeeded("pull", qnl_output_audio_float(engine, ROOM, BOB, mix)))
            return false;
        heard = peak(mix, 2 * FRAMES);
    }
    printf("quenlis %s: Alice talks at %.3f, Bob hears her at %.3f\n", qnl_get_version(), 0.25, heard);
    return true;
}

int main(void) {
    const qnl_library_configuration format = {RATE, FRAMES, 2, true, 1};
    int code;
    qnl_handle engine = qnl_initialize_library(NULL, NULL, format, &code);
    if (!succeeded("start", code))
        return 1;
    bool held = hold_conference(engine);
    return succeeded("stop", qnl_destroy_library(engine)) && held ? 0 : 1;
}
