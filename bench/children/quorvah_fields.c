/* A scanner that reports one processor of 30 fields. */
#include <stdio.h>
#include <string.h>

int main(int argc, char** argv) {
    for (int i = 1; i + 1 < argc; ++i) {
        if (strcmp(argv[i], "-o") != 0) continue;
        FILE* out = fopen(argv[i + 1], "w");
        if (out == NULL) return 1;
        fputs("<Hardware><Processor>", out);
        for (int field = 1; field <= 30; ++field) fprintf(out, "<Field%02d>value</Field%02d>", field, field);
        fputs("</Processor></Hardware>", out);
        return fclose(out) == 0 ? 0 : 1;
    }
    return 2;
}
