// A scanner that fails.
int main() {
    return 3;
}
