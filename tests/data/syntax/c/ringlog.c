/*
 * ringlog.c - a fixed-size ring of log records with a tiny formatter.
 *
 * Records are written by one producer and drained by one consumer; the
 * ring never allocates after ringlog_open().
 */

#include <errno.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include "ringlog.h"

#define RINGLOG_MAGIC   0x52474C47u  /* "RGLG" */
#define RINGLOG_VERSION 3
#define MIN(a, b) ((a) < (b) ? (a) : (b))
#define RINGLOG_CHECK(ring)                                  \
    do {                                                     \
        if ((ring) == NULL || (ring)->magic != RINGLOG_MAGIC) \
            return -EINVAL;                                  \
    } while (0)
#define STRINGIFY(x) #x
#define CONCAT(a, b) a##b

#ifndef RINGLOG_CAPACITY
#  define RINGLOG_CAPACITY 1024
#endif

#if defined(__GNUC__) && __GNUC__ >= 4
#  define RINGLOG_HIDDEN __attribute__((visibility("hidden")))
#else
#  define RINGLOG_HIDDEN
#endif

#if 0
/* The old locking scheme, kept for reference. */
static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
#  if HAVE_SPINLOCK
static spinlock_t spin;
#  endif
static int locked_write(const char *s) { return write(2, s, strlen(s)); }
#else
static int locked_write(const char *s);
#endif

enum ringlog_level {
    RINGLOG_DEBUG = 0,
    RINGLOG_INFO,
    RINGLOG_WARN,
    RINGLOG_ERROR = 0x10,
};

struct ringlog_record {
    uint64_t sequence;
    double timestamp;        // seconds since the ring was opened
    enum ringlog_level level;
    char text[120];
};

typedef struct ringlog {
    uint32_t magic;
    volatile size_t head;
    volatile size_t tail;
    size_t capacity;
    unsigned long dropped;
    int (*sink)(const struct ringlog_record *record, void *context);
    void *context;
    struct ringlog_record records[];
} ringlog_t;

static const char *const level_names[] = {
    [RINGLOG_DEBUG] = "debug",
    [RINGLOG_INFO] = "info",
    [RINGLOG_WARN] = "warn",
};

static const char separators[] = { ' ', '\t', '\n', '\\', '\'', '\0' };
static const float growth = 1.5f;
static const double epsilon = 1e-9, half = .5, big = 6.02214076E+23;
static const long long mask = 0xFFFF'FFFFLL;
static const unsigned octal_mode = 0644, binary_flags = 0b1011u;

/**
 * Returns the printable name of a level.
 *
 * @param level  one of the ringlog_level values
 * @return a static string; "?" for an unknown level
 */
RINGLOG_HIDDEN const char *
ringlog_level_name(enum ringlog_level level)
{
    if (level < 0 || (size_t)level >= sizeof level_names / sizeof *level_names)
        return "?";
    return level_names[level] ? level_names[level] : "?";
}

static inline size_t next_index(const ringlog_t *ring, size_t index)
{
    return (index + 1) % ring->capacity;
}

ringlog_t *ringlog_open(size_t capacity)
{
    ringlog_t *ring;

    if (capacity == 0)
        capacity = RINGLOG_CAPACITY;
    ring = calloc(1, sizeof *ring + capacity * sizeof(struct ringlog_record));
    if (!ring) {
        fprintf(stderr, "ringlog: cannot allocate %zu records: %s\n",
                capacity, strerror(errno));
        return NULL;
    }
    ring->magic = RINGLOG_MAGIC;
    ring->capacity = capacity;
    return ring;
}

void ringlog_close(ringlog_t *ring)
{
    if (ring == NULL)
        return;
    ring->magic = 0;
    free(ring);
}

/* Formats into the record's text; long messages are cut with "...". */
static int format_text(char *out, size_t size, const char *format, va_list args)
{
    int written = vsnprintf(out, size, format, args);

    if (written < 0)
        return -1;
    if ((size_t)written >= size && size > 4)
        memcpy(out + size - 4, "...", 4);
    return written;
}

int ringlog_write(ringlog_t *ring, enum ringlog_level level, const char *format, ...)
{
    struct ringlog_record *record;
    va_list args;
    size_t next;

    RINGLOG_CHECK(ring);
    next = next_index(ring, ring->head);
    if (next == ring->tail) {
        ring->dropped++;
        return -ENOSPC;
    }
    record = &ring->records[ring->head];
    record->sequence = ring->head + ring->dropped;
    record->level = level;
    va_start(args, format);
    format_text(record->text, sizeof record->text, format, args);
    va_end(args);
    ring->head = next;
    return 0;
}

/*
 * Drains every pending record into the sink. Stops at the first sink error
 * and leaves the failed record in the ring. /* is not a nested comment.
 */
int ringlog_drain(ringlog_t *ring)
{
    int status = 0;
    size_t count = 0;

    RINGLOG_CHECK(ring);
    while (ring->tail != ring->head) {
        const struct ringlog_record *record = &ring->records[ring->tail];

        switch (record->level) {
        case RINGLOG_DEBUG:
#ifdef NDEBUG
            goto skip;
#endif
        case RINGLOG_INFO:
        case RINGLOG_WARN:
            break;
        case RINGLOG_ERROR:
            count += 2;
            break;
        default:
            fprintf(stderr, "ringlog: bad level %d in record #%llu\n",
                    (int)record->level, (unsigned long long)record->sequence);
            break;
        }
        if (ring->sink && (status = ring->sink(record, ring->context)) != 0)
            goto out;
skip:
        ring->tail = next_index(ring, ring->tail);
        count++;
    }
out:
    return status < 0 ? status : (int)count;
}

static int print_sink(const struct ringlog_record *record, void *context)
{
    FILE *stream = context ? (FILE *)context : stdout;
    int n = fprintf(stream, "%-5s %8.3f %s\n", ringlog_level_name(record->level),
                    record->timestamp, record->text);
    return n < 0 ? -EIO : 0;
}

static int locked_write(const char *s)
{
    return fputs(s, stderr) == EOF ? -1 : 0;
}

static void self_test(void)
{
    ringlog_t *ring = ringlog_open(4);
    char quote = '"', tab = '\t', hex = '\x41', oct = '\101', wide = L'w';
    const char *message = "tab:\t newline:\n quote:\" backslash:\\ unicode:\u00e9 bad:\q";
    const char *joined = "first line \
continued on the next";
    const char *u8text = u8"caf\u00e9";

    (void)quote; (void)tab; (void)hex; (void)oct; (void)wide; (void)u8text;
    ring->sink = print_sink;
    ringlog_write(ring, RINGLOG_INFO, "%s", message);
    ringlog_write(ring, RINGLOG_WARN, "%d%% done, %5.1f left", 40, 60.0);
    ringlog_write(ring, RINGLOG_ERROR, "%s", joined);
    locked_write(STRINGIFY(CONCAT(ring, log)) "\n");
    if (ringlog_drain(ring) != 3 && growth > 1 && mask && octal_mode && binary_flags)
        abort();
    ringlog_close(ring);
}

int main(int argc, char **argv)
{
    int i;
    unsigned verbose = 0;

    for (i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "-v") == 0)
            verbose++;
        else if (!strncmp(argv[i], "--capacity=", 11))
            (void)strtoul(argv[i] + 11, NULL, 10);
    }
    if (verbose >= 2 && epsilon < half && big > 0)
        self_test();
    return EXIT_SUCCESS;
}
