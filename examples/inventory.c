/* Prints the operating system and the processors of this machine.
 *     inventory [TOOLKIT-DIRECTORY]     default: the directory that /etc/zav/zav.ini names */
#include <locale.h>
#include <stdio.h>
#include <zav.h>

enum { PROCESSOR = 2, OPERATING_SYSTEM = 4 };

static void report(int level, int component, void* stream, const char* function, const char* message) {
    if (level == 0) fprintf(stream, "[%d] %s: %s\n", component, function, message);
}

static int print_group(ZAVHwCtx* hw, int group) {
    const wchar_t *name, **fields, *value;
    int instances, count;
    int code = ZAV_hw_get_group_name(hw, group, &name);
    if (code == ZAV_SUCCESS) code = ZAV_hw_get_group_instances(hw, group, &instances);
    for (int i = 0; code == ZAV_SUCCESS && i < instances; ++i) {
        printf("%ls %d\n", name, i + 1);
        code = ZAV_hw_get_fields(hw, group, i, &fields, &count);
        for (int f = 0; code == ZAV_SUCCESS && f < count; ++f) {
            code = ZAV_hw_get_value(hw, group, i, fields[f], &value);
            if (code == ZAV_SUCCESS && *value != L'\0') printf("  %ls: %ls\n", fields[f], value);
        }
    }
    return code;
}

int main(int argc, char** argv) {
    setlocale(LC_ALL, ""); /* values may contain any Unicode character */
    wchar_t toolkit[4096];
    if (argc > 1 && swprintf(toolkit, 4096, L"%s", argv[1]) < 0) return 1;

    ZAVCtx* zav = NULL;
    ZAVHwCtx* hw = NULL;
    int code = ZAV_init("inventory", report, stderr, NULL, argc > 1 ? toolkit : NULL, &zav);
    if (code == ZAV_SUCCESS) code = ZAV_hw_init(zav, report, stderr, &hw);
    if (code == ZAV_SUCCESS) code = ZAV_hw_setopt(hw, OPERATING_SYSTEM, 1);
    if (code == ZAV_SUCCESS) code = ZAV_hw_setopt(hw, PROCESSOR, 1);
    if (code == ZAV_SUCCESS) code = ZAV_hw_run(hw);
    if (code == ZAV_SUCCESS) code = print_group(hw, OPERATING_SYSTEM);
    if (code == ZAV_SUCCESS) code = print_group(hw, PROCESSOR);
    if (code != ZAV_SUCCESS) fprintf(stderr, "inventory: failed with code %d, see zav.h\n", code);

    ZAV_hw_free(hw); /* both accept null */
    ZAV_free(zav);
    return code == ZAV_SUCCESS ? 0 : 1;
}
