/* A scanner that prints 100,000 lines. */
#include <stdio.h>

int main(void) {
    for (int i = 0; i < 100000; ++i) printf("group Processor: %d instances, 3 ms\n", i);
    return 0;
}
