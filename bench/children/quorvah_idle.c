/* A scanner that does nothing. */
int main(void) {
    return 0;
}
