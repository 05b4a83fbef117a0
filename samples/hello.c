/* A small C program to try the editor on: move with the arrows, select with Shift,
 * save with Ctrl-S, and undo with Ctrl-Z. F1 lists every key. */
#include <stdio.h>
#include <string.h>

// Counts the words in a line: runs of characters that are not blanks.
static int countWords(const char *line) {
    int words = 0, inWord = 0;
    for (; *line; ++line) {
        int blank = *line == ' ' || *line == '\t' || *line == '\n';
        if (!blank && !inWord) ++words;
        inWord = !blank;
    }
    return words;
}

int main(void) {
    char line[1024];
    long total = 0;
    while (fgets(line, sizeof line, stdin)) total += countWords(line);
    printf("%ld words\n", total);
    return 0;
}
