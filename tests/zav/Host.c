/* A host in plain C99 that uses only the header and libzav.so.
 *     zav_c_host PHASE HARDWARE_SCANNER SOFTWARE_SCANNER
 * The scanners are programs that write what stands in output.xml, and warnings.xml, beside them. */
#define _XOPEN_SOURCE 700

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "include/zav.h"

#define CHECK(condition)                                                            \
    do {                                                                            \
        if (!(condition)) {                                                         \
            fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, __LINE__, #condition); \
            exit(1);                                                                \
        }                                                                           \
    } while (0)

enum { MEMORY = 3, OPERATING_SYSTEM = 4, MODEM = 30, UNUSED = 17, PATH_SIZE = 512 };

/* The host's directory for temporary files and the toolkit's directory. */
static char root[] = "/tmp/zav_c_host_XXXXXX";
static char temp[PATH_SIZE];
static char toolkit[PATH_SIZE];
static wchar_t wide_temp[PATH_SIZE];
static wchar_t wide_toolkit[PATH_SIZE];

static ZAVCtx* handle;
static ZAVHwCtx* hw;
static ZAVSwCtx* sw;

static struct {
    int count;
    int last_level;
    int last_component;
    char last_function[64];
    char last_message[256];
} heard;

static void hear(int level, int component, void* user_data, const char* function, const char* message) {
    CHECK(user_data == &heard);
    ++heard.count;
    heard.last_level = level;
    heard.last_component = component;
    snprintf(heard.last_function, sizeof heard.last_function, "%s", function);
    snprintf(heard.last_message, sizeof heard.last_message, "%s", message);
}

static void widen(wchar_t* wide, const char* text) {
    do {
        *wide++ = (wchar_t)*text;
    } while (*text++ != '\0');
}

static void write_file(const char* name, const char* xml) {
    char path[PATH_SIZE + 32];
    snprintf(path, sizeof path, "%s/%s", toolkit, name);
    FILE* file = fopen(path, "w");
    CHECK(file != NULL);
    CHECK(fputs(xml, file) >= 0);
    CHECK(fclose(file) == 0);
}

static void write_output(const char* xml) {
    write_file("output.xml", xml);
}

static void link_scanner(const char* program, const char* name) {
    char link[PATH_SIZE + 16];
    snprintf(link, sizeof link, "%s/%s", toolkit, name);
    CHECK(symlink(program, link) == 0);
}

static void make_directories(const char* hardware_scanner, const char* software_scanner) {
    CHECK(mkdtemp(root) != NULL);
    snprintf(temp, sizeof temp, "%s/temp", root);
    snprintf(toolkit, sizeof toolkit, "%s/toolkit", root);
    CHECK(mkdir(temp, 0700) == 0);
    CHECK(mkdir(toolkit, 0700) == 0);
    widen(wide_temp, temp);
    widen(wide_toolkit, toolkit);
    link_scanner(hardware_scanner, "quorvah");
    link_scanner(software_scanner, "quorvis");
}

/* Fails if the library has left a file in its directory. */
static void remove_directories(void) {
    static const char* const names[] = {"output.xml", "warnings.xml",       "quorvah",
                                        "quorvis",    "seen_configuration", "seen_signatures"};
    char path[PATH_SIZE + 32];
    CHECK(rmdir(temp) == 0);
    for (size_t i = 0; i < sizeof names / sizeof *names; ++i) {
        snprintf(path, sizeof path, "%s/%s", toolkit, names[i]);
        unlink(path);
    }
    CHECK(rmdir(toolkit) == 0);
    CHECK(rmdir(root) == 0);
}

static void open_all(void) {
    CHECK(ZAV_init("c host", hear, &heard, wide_temp, wide_toolkit, &handle) == ZAV_SUCCESS);
    CHECK(ZAV_hw_init(handle, hear, &heard, &hw) == ZAV_SUCCESS);
    CHECK(ZAV_sw_init(handle, hear, &heard, &sw) == ZAV_SUCCESS);
}

static void close_all(void) {
    CHECK(ZAV_sw_free(sw) == ZAV_SUCCESS);
    CHECK(ZAV_hw_free(hw) == ZAV_SUCCESS);
    CHECK(ZAV_free(handle) == ZAV_SUCCESS);
}

/* ---- The phases ---- */

static void phase_handle(void) {
    ZAVCtx* other = NULL;
    CHECK(ZAV_init(NULL, hear, &heard, wide_temp, wide_toolkit, &other) == ZAV_ERROR_EXPLOITER);
    CHECK(ZAV_init(NULL, hear, &heard, NULL, NULL, NULL) == ZAV_ERROR_EXPLOITER);
    CHECK(heard.count == 0);
    CHECK(ZAV_init("c host", NULL, NULL, L"/none/at/all", wide_toolkit, &other) == ZAV_ERROR_WORKSPACE);
    CHECK(other == NULL);
    CHECK(ZAV_free(NULL) == ZAV_ERROR_CONTEXT);

    CHECK(ZAV_init("c host", hear, &heard, wide_temp, wide_toolkit, &handle) == ZAV_SUCCESS);
    CHECK(heard.count > 0 && heard.last_component == 1);
    CHECK(ZAV_init("c host", NULL, NULL, wide_temp, NULL, &other) == ZAV_SUCCESS);
    CHECK(other != handle);
    CHECK(ZAV_free(other) == ZAV_SUCCESS);
    CHECK(ZAV_free(handle) == ZAV_SUCCESS);
}

static void phase_context(void) {
    CHECK(ZAV_hw_init(NULL, hear, &heard, &hw) == ZAV_ERROR_CONTEXT);
    CHECK(ZAV_hw_free(NULL) == ZAV_ERROR_CONTEXT);
    CHECK(ZAV_sw_init(NULL, hear, &heard, &sw) == ZAV_ERROR_CONTEXT);
    CHECK(ZAV_sw_free(NULL) == ZAV_ERROR_CONTEXT);
    open_all();
    CHECK(heard.last_component == 4);
    CHECK(ZAV_sw_init(handle, hear, &heard, NULL) == ZAV_ERROR_SW_POINTER);
    CHECK(ZAV_hw_init(handle, hear, &heard, NULL) == ZAV_ERROR_HW_POINTER);
    int code = 0;
    CHECK(ZAV_hw_get_returncode(hw, &code) == ZAV_SUCCESS);
    CHECK(code == -1);
    CHECK(ZAV_sw_get_returncode(sw, &code) == ZAV_SUCCESS);
    CHECK(code == -1);
    close_all();
    CHECK(strcmp(heard.last_function, "TemporaryDir::deleteDirectory()") == 0);
}

static void phase_options(void) {
    open_all();
    CHECK(ZAV_hw_setopt(hw, 0, 1) == ZAV_SUCCESS);
    CHECK(strcmp(heard.last_message, "Setting all opts: [true]") == 0);
    CHECK(ZAV_hw_setopt(hw, OPERATING_SYSTEM, 0) == ZAV_SUCCESS);
    CHECK(heard.last_level == 2);
    CHECK(strcmp(heard.last_function, "ZAV_hw_setopt") == 0);
    CHECK(strcmp(heard.last_message, "Setting opt: [4=false]") == 0);
    CHECK(ZAV_hw_setopt(hw, UNUSED, 1) == ZAV_SUCCESS);
    CHECK(ZAV_hw_setopt(hw, 52, 1) == ZAV_ERROR_HW_GROUP);
    CHECK(ZAV_hw_setopt(hw, -1, 1) == ZAV_ERROR_HW_GROUP);
    CHECK(ZAV_hw_setopt(hw, OPERATING_SYSTEM, 2) == ZAV_ERROR_OPTION);
    CHECK(ZAV_hw_setopt(NULL, 99, 9) == ZAV_ERROR_CONTEXT);
    close_all();
}

static void phase_names(void) {
    open_all();
    const wchar_t* name = NULL;
    CHECK(ZAV_hw_get_group_name(hw, OPERATING_SYSTEM, &name) == ZAV_SUCCESS);
    CHECK(wcscmp(name, L"OperatingSystem") == 0);
    name = NULL;
    CHECK(ZAV_hw_get_group_name(hw, UNUSED, &name) == ZAV_ERROR_HW_GROUP);
    CHECK(ZAV_hw_get_group_name(hw, 52, &name) == ZAV_ERROR_HW_GROUP);
    CHECK(ZAV_hw_get_group_name(NULL, 1, &name) == ZAV_ERROR_CONTEXT);
    CHECK(name == NULL);
    close_all();
}

static void phase_scan(void) {
    const wchar_t** names = NULL;
    const wchar_t* value = NULL;
    int number = 0;
    write_output("<QEL><Memory><Slot>1</Slot><Slot>2</Slot><Type/></Memory><Memory/></QEL>");
    open_all();
    CHECK(ZAV_hw_get_group_instances(hw, MEMORY, &number) == ZAV_ERROR_HW_NO_SCAN);
    CHECK(ZAV_hw_setopt(hw, MEMORY, 1) == ZAV_SUCCESS);
    CHECK(ZAV_hw_setopt(hw, MODEM, 1) == ZAV_SUCCESS);
    CHECK(ZAV_hw_run(hw) == ZAV_SUCCESS);
    CHECK(ZAV_hw_get_returncode(hw, &number) == ZAV_SUCCESS && number == 0);

    CHECK(ZAV_hw_get_group_instances(hw, MEMORY, &number) == ZAV_SUCCESS && number == 2);
    CHECK(ZAV_hw_get_group_instances(hw, MODEM, &number) == ZAV_SUCCESS && number == 0);
    CHECK(ZAV_hw_get_group_instances(hw, OPERATING_SYSTEM, &number) == ZAV_ERROR_HW_GROUP_DISABLED);
    CHECK(ZAV_hw_get_group_instances(hw, 0, &number) == ZAV_ERROR_HW_GROUP);
    CHECK(ZAV_hw_get_group_instances(hw, MEMORY, NULL) == ZAV_ERROR_HW_POINTER);

    CHECK(ZAV_hw_get_fields(hw, MEMORY, 0, &names, &number) == ZAV_SUCCESS && number == 3);
    CHECK(wcscmp(names[0], L"Slot") == 0);
    CHECK(wcscmp(names[1], L"Slot") == 0);
    CHECK(wcscmp(names[2], L"Type") == 0);
    CHECK(ZAV_hw_get_fields(hw, MEMORY, 1, &names, &number) == ZAV_SUCCESS && number == 0 && names == NULL);
    CHECK(ZAV_hw_get_fields(hw, MEMORY, 2, &names, &number) == ZAV_ERROR_HW_INSTANCE);

    CHECK(ZAV_hw_get_value(hw, MEMORY, 0, L"Slot", &value) == ZAV_SUCCESS && wcscmp(value, L"1") == 0);
    CHECK(ZAV_hw_get_value(hw, MEMORY, 0, L"Type", &value) == ZAV_SUCCESS && *value == L'\0');
    CHECK(ZAV_hw_get_value(hw, MEMORY, 0, L"slot", &value) == ZAV_ERROR_HW_FIELD);
    CHECK(ZAV_hw_get_value(hw, MEMORY, 0, NULL, &value) == ZAV_ERROR_HW_POINTER);
    close_all();
}

static void phase_evaluation(void) {
    const wchar_t* signatures[] = {L"<Signature/>", L"<Signature/>"};
    ZAVSwResult** results = NULL;
    ZAVSwResult* result = NULL;
    const wchar_t** texts = NULL;
    const wchar_t* text = NULL;
    unsigned int found = 0;
    int number = 0;
    write_output(
        "<QEL><MatchedSignature guid='1'><Variable name='b' value='2'/><Variable name='a' value='1'/>"
        "<Metadata/></MatchedSignature><MatchedSignature guid='1'/></QEL>");
    write_file("warnings.xml", "<Events><Event>w</Event></Events>");
    open_all();
    CHECK(ZAV_sw_get_results(sw, &results, &number) == ZAV_ERROR_SW_NO_RESULTS);
    CHECK(ZAV_sw_setopt_variable(sw, L"name", L"value", L"scope") == ZAV_SUCCESS);
    CHECK(strcmp(heard.last_message, "Variable [name] set with value [value] for scope [scope]") == 0);
    CHECK(ZAV_sw_setopt_config(sw, L"plugin", L"attribute", NULL) == ZAV_ERROR_OPTION);
    CHECK(ZAV_sw_setopt_config(sw, L"plugin", L"attribute", L"value") == ZAV_SUCCESS);
    CHECK(ZAV_sw_evaluate(sw, NULL) == ZAV_ERROR_SW_SIGNATURE);
    CHECK(ZAV_sw_evaluate(sw, signatures[0]) == ZAV_SUCCESS);
    CHECK(ZAV_sw_evaluate_file(sw, L"/none.xml") == ZAV_SUCCESS);
    CHECK(ZAV_sw_evaluate_multi(sw, signatures, 2) == ZAV_SUCCESS);
    CHECK(ZAV_sw_get_returncode(sw, &number) == ZAV_SUCCESS && number == 0);

    CHECK(ZAV_sw_get_results(sw, &results, &number) == ZAV_SUCCESS && number == 2);
    CHECK(ZAV_sw_find_result_by_guid(sw, L"1", &result) == ZAV_SUCCESS && result == results[0]);
    CHECK(ZAV_sw_find_result_by_guid(sw, L"2", &result) == ZAV_ERROR_SW_NOT_FOUND);
    CHECK(ZAV_sw_find_results_by_guid(sw, L"1", &results, &found) == ZAV_SUCCESS && found == 2);
    CHECK(ZAV_sw_get_variables(sw, result, &texts, &number) == ZAV_SUCCESS && number == 2);
    CHECK(wcscmp(texts[0], L"a") == 0 && wcscmp(texts[1], L"b") == 0);
    CHECK(ZAV_sw_get_value(sw, result, L"b", &text) == ZAV_SUCCESS && wcscmp(text, L"2") == 0);
    CHECK(ZAV_sw_get_value(sw, result, L"c", &text) == ZAV_ERROR_SW_VARIABLE);
    CHECK(ZAV_sw_get_metadata(sw, result, &text) == ZAV_SUCCESS && wcscmp(text, L"<Metadata/>") == 0);
    CHECK(ZAV_sw_get_guid(sw, results[1], &text) == ZAV_SUCCESS && wcscmp(text, L"1") == 0);
    CHECK(ZAV_sw_get_warnings(sw, &texts, &number) == ZAV_SUCCESS && number == 1);
    CHECK(wcscmp(texts[0], L"<Event>w</Event>") == 0);

    write_file("warnings.xml", "<Events>");
    CHECK(ZAV_sw_evaluate(sw, signatures[0]) == ZAV_ERROR_SW_WARNINGS);
    CHECK(ZAV_sw_get_results(sw, &results, &number) == ZAV_SUCCESS && number == 2);
    write_output("<QEL>");
    CHECK(ZAV_sw_evaluate(sw, signatures[0]) == ZAV_ERROR_SW_OUTPUT);
    close_all();
}

static void phase_failures(void) {
    int number = 0;
    open_all();
    CHECK(ZAV_hw_run(NULL) == ZAV_ERROR_CONTEXT);
    CHECK(ZAV_hw_setopt(hw, 0, 1) == ZAV_SUCCESS);
    write_output("<QEL><Memory><Slot>1</Slot></Memory><Unknown/></QEL>");
    CHECK(ZAV_hw_run(hw) == ZAV_ERROR_HW_OUTPUT);
    CHECK(heard.last_level == 0);
    CHECK(strcmp(heard.last_message, "Error: No such group [Unknown]") == 0);
    CHECK(ZAV_hw_get_group_instances(hw, MEMORY, &number) == ZAV_SUCCESS && number == 1);

    write_output("<QEL>");
    CHECK(ZAV_hw_run(hw) == ZAV_ERROR_HW_OUTPUT);
    CHECK(ZAV_hw_get_group_instances(hw, MEMORY, &number) == ZAV_SUCCESS && number == 0);

    char scanner[PATH_SIZE + 16];
    snprintf(scanner, sizeof scanner, "%s/quorvah", toolkit);
    CHECK(unlink(scanner) == 0);
    CHECK(ZAV_hw_run(hw) == ZAV_ERROR_HW_SCANNER);
    CHECK(ZAV_hw_get_returncode(hw, &number) == ZAV_SUCCESS && number == -1);
    CHECK(ZAV_hw_get_group_instances(hw, MEMORY, &number) == ZAV_ERROR_HW_NO_SCAN);
    close_all();
}

static void phase_repetition(void) {
    open_all();
    CHECK(ZAV_hw_setopt(hw, 0, 1) == ZAV_SUCCESS);
    for (int round = 1; round <= 10; ++round) {
        char output[128];
        int number = 0;
        const wchar_t* value = NULL;
        snprintf(output, sizeof output, "<QEL><Modem><Round>%d</Round></Modem></QEL>", round);
        write_output(output);
        CHECK(ZAV_hw_run(hw) == ZAV_SUCCESS);
        CHECK(ZAV_hw_get_group_instances(hw, MODEM, &number) == ZAV_SUCCESS && number == 1);
        CHECK(ZAV_hw_get_value(hw, MODEM, 0, L"Round", &value) == ZAV_SUCCESS);
        CHECK(wcstol(value, NULL, 10) == round);
    }
    close_all();
}

int main(int argc, char** argv) {
    static const struct {
        const char* name;
        void (*run)(void);
    } phases[] = {
        {"handle", phase_handle},
        {"context", phase_context},
        {"options", phase_options},
        {"names", phase_names},
        {"scan", phase_scan},
        {"failures", phase_failures},
        {"repetition", phase_repetition},
        {"evaluation", phase_evaluation},
    };
    CHECK(argc == 4);
    CHECK(sizeof(wchar_t) == 4);
    for (size_t i = 0; i < sizeof phases / sizeof *phases; ++i) {
        if (strcmp(phases[i].name, argv[1]) != 0) continue;
        make_directories(argv[2], argv[3]);
        phases[i].run();
        remove_directories();
        return 0;
    }
    fprintf(stderr, "no such phase: %s\n", argv[1]);
    return 2;
}
