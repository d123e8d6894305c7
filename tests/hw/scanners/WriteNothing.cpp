// Succeeds without an output file.
int main() {
    return 0;
}
