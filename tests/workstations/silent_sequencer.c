/* Preloaded into a workstation that does not start without an ALSA sequencer, on a machine that has
 * none: a sequencer that nothing comes from and nothing goes to. What only keeps numbers in memory
 * (snd_seq_client_info_... and so on) stays libasound's own. Arguments that nobody reads are left
 * out, so that no header of libasound is needed. */

#define _GNU_SOURCE
#include <errno.h>
#include <poll.h>
#include <stddef.h>
#include <sys/eventfd.h>

static int s_nSequencer;
static int s_nTimer;
static int s_nPorts;

int snd_seq_open(void** handle) {
    *handle = &s_nSequencer;
    return 0;
}

int snd_timer_open(void** handle) {
    *handle = &s_nTimer;
    return 0;
}

int snd_seq_client_id(void) {
    return 128;
}

int snd_seq_create_simple_port(void) {
    return s_nPorts++;
}

int snd_seq_poll_descriptors_count(void) {
    return 1;
}

/* The one descriptor is written to by nobody. */
int snd_seq_poll_descriptors(void* handle, struct pollfd* descriptors, unsigned int nSpace) {
    static int nNothing = -1;
    (void)handle;
    if (nSpace < 1) return 0;
    if (nNothing < 0) nNothing = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    descriptors->fd = nNothing;
    descriptors->events = POLLIN;
    return 1;
}

int snd_seq_event_input(void* handle, void** event) {
    (void)handle;
    *event = NULL;
    return -EAGAIN;
}

#define ANSWERS(value, name) \
    int name(void) {         \
        return value;        \
    }

ANSWERS(0, snd_seq_alloc_queue)
ANSWERS(0, snd_seq_close)
ANSWERS(0, snd_seq_control_queue)
ANSWERS(0, snd_seq_delete_simple_port)
ANSWERS(0, snd_seq_drain_output)
ANSWERS(0, snd_seq_drop_input)
ANSWERS(0, snd_seq_drop_output)
ANSWERS(0, snd_seq_event_input_pending)
ANSWERS(0, snd_seq_event_output)
ANSWERS(0, snd_seq_event_output_direct)
ANSWERS(0, snd_seq_free_queue)
ANSWERS(0, snd_seq_get_port_info)
ANSWERS(0, snd_seq_get_queue_status)
ANSWERS(0, snd_seq_get_queue_tempo)
ANSWERS(0, snd_seq_remove_events)
ANSWERS(0, snd_seq_set_client_name)
ANSWERS(0, snd_seq_set_port_info)
ANSWERS(0, snd_seq_set_queue_tempo)
ANSWERS(0, snd_seq_set_queue_timer)
ANSWERS(0, snd_seq_subscribe_port)
ANSWERS(0, snd_seq_unsubscribe_port)
ANSWERS(0, snd_timer_close)
ANSWERS(0, snd_timer_info)
ANSWERS(-ENOENT, snd_seq_get_any_client_info)
ANSWERS(-ENOENT, snd_seq_get_any_port_info)
ANSWERS(-ENOENT, snd_seq_query_next_client)
ANSWERS(-ENOENT, snd_seq_query_next_port)
ANSWERS(-ENOENT, snd_seq_query_port_subscribers)
