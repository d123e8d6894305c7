
/* Runs the watchdog of the guide with a scanner that never ends. The scanner writes its process number beside itself. */
int main(int argc, char** argv) {
    char path[4096];
    char number[32] = "";
    if (argc != 2) return 2;
    mkdir(argv[1], 0755);
    snprintf(path, sizeof path, "%s/quorvah", argv[1]);
    FILE* file = fopen(path, "w");
    if (file == NULL || fprintf(file, "#!/bin/sh\necho $$ > '%s.pid'\nexec sleep 1000\n", path) < 0) return 2;
    if (fclose(file) != 0 || chmod(path, 0755) != 0) return 2;

    wchar_t temporary[4096]; /* what the killed process leaves stays in the build directory */
    if (swprintf(temporary, 4096, L"%s", argv[1]) < 0) return 2;
    if (scan_with_limit(2000, print_processors, temporary) != -1) {
        printf("the scan is said to have ended\n");
        return 1;
    }
    strcat(path, ".pid");
    file = fopen(path, "r");
    if (file == NULL || fgets(number, sizeof number, file) == NULL) {
        printf("the scanner was not started\n");
        return 1;
    }
    fclose(file);
    remove(path);
    for (int i = 0; i < 100; ++i) { /* the scanner is not a child, so it cannot be waited for */
        if (kill((pid_t)strtol(number, NULL, 10), 0) != 0) return 0;
        poll(NULL, 0, 100);
    }
    printf("the scanner %s still runs\n", number);
    return 1;
}
