/* SPDX-License-Identifier: Apache-2.0
 *
 * zav.h: the inventory of this machine, hardware and software, for C99 and C++.
 *
 * A host opens one library handle (ZAVCtx), then any number of contexts on it: hardware contexts
 * (ZAVHwCtx) and software contexts (ZAVSwCtx). A context runs the toolkit's scanner as a child process
 * and keeps the results until the next run. The following holds for all functions. A complete host is
 * examples/inventory.c.
 *
 * 1. Return codes. Every function returns 0 on success or one of the codes below; zav_codes.h has a
 *    sentence for each. Results are returned through pointer arguments, which are written only on success.
 *    No function throws, prints or exits. Messages at level 0 say what failed and why.
 * 2. Ownership. Everything that a function returns is owned by the context: never free or change it. It
 *    stays valid until the next run on that context or until the context is freed, whichever comes
 *    first. Texts of the previous results may be arguments of a run. A handle or context must not be used
 *    after its free function has returned; the library cannot detect such an error.
 * 3. Text is wide and NUL-terminated. On the way to the operating system and into the scanner's files
 *    each character is reduced to its low 8 bits. 7-bit text is therefore passed unchanged. Pass any other
 *    path with one character for each of its bytes, and other text in signatures, variables and settings
 *    as character references (&#233;) or as the bytes of its UTF-8 form. Values found by the scanner may
 *    contain any Unicode character.
 * 4. Locale. Messages with wide text are converted by the C library. Call setlocale(LC_CTYPE, "") in a
 *    UTF-8 locale before the first call: in the "C" locale a message with a character beyond 7 bits is
 *    dropped as a whole. The messages that say why something failed are printable ASCII and arrive in
 *    every locale: other bytes of names are written as \xHH, and a backslash is doubled. Return codes and
 *    values do not depend on the locale. The scanner's lines are logged without carriage returns; a last
 *    line without a line feed is not logged.
 * 5. Threads. Handles and contexts have no lock: calls on one of them, and on a handle and its
 *    contexts, must not overlap. Different threads may use different handles at the same time. The logging
 *    callback is never called by two threads at once. It must not call the library, and it must not leave
 *    by longjmp, which would never release the logger's lock. A thread that is cancelled (pthread_cancel)
 *    inside the library continues until the function returns. A run reads the environment (environ), which
 *    no other thread may change in the meantime. ZAV_init and the functions that make contexts call srand()
 *    with the time; a host that relies on the sequence of rand() must call srand() afterwards.
 * 6. Processes. The scanner is not a child of the host: neither a handler of SIGCHLD nor a thread that
 *    waits for every child affects a run. A run has no time limit; it ends when the scanner has ended, even
 *    if a process that the scanner started still has its output open. The library opens nothing on the
 *    descriptors 0 to 2, not even in a host that has closed them, and its writes raise no SIGPIPE or
 *    SIGXFSZ. A child that the host forks may use the library with handles of its own; it must neither use
 *    nor free those of its parent.
 * 7. Lifetime. Free the contexts before the handle on which they were made. The files that a context
 *    exchanges with the scanner stay in its temporary directory until it is freed: for each run the
 *    configuration and the scanner's output, from some KiB to some MiB. A host that scans repeatedly should
 *    make a new context from time to time.
 * 8. Memory. A function that runs out of memory, or whose callback throws, returns ZAV_ERROR_MEMORY
 *    and keeps the context usable; if it was a run, there are no results. A function whose comment does not
 *    name this code returns it only when the callback throws.
 * 9. Trust. The scanner runs with the host's privileges. A privileged host that passes a toolkit directory
 *    or relies on /etc/zav/zav.ini must check that this file, the toolkit's directory, both scanners and
 *    every directory and link on the way to them belong to root or to the host's user and that no other
 *    user can write to them; the library does not check this. The same holds for the temporary directory,
 *    which may be writable by others only if it has the sticky bit: whoever can rename its entries
 *    determines which files are read and written. The path of the toolkit's directory must not contain a
 *    blank, tab or double quote, as the scanner's path is not quoted and would be split there. All other
 *    paths may contain any character.
 */
#ifndef ZAV_H
#define ZAV_H

#include <wchar.h>

/* The version of this header: three numbers, and the same as text. */
#define ZAV_VERSION_MAJOR 0
#define ZAV_VERSION_MINOR 1
#define ZAV_VERSION_PATCH 0
#define ZAV_VERSION "0.1.0"

#if defined(__GNUC__)
#define ZAV_EXPORT __attribute__((visibility("default")))
#else
#define ZAV_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The library handle: the host's name, its logger, a private temporary directory, the toolkit's
 * directory. */
typedef struct ZAVCtx ZAVCtx;
/* A hardware inventory: the groups that are wanted, and what the last scan found. */
typedef struct ZAVHwCtx ZAVHwCtx;
/* A software inventory: preset variables and plug-in settings, and what the last evaluation found. */
typedef struct ZAVSwCtx ZAVSwCtx;
/* One matched signature of a software inventory; owned by its context. */
typedef struct ZAVSwResult ZAVSwResult;

/* Receives every message of the library; the library filters nothing.
 * level        0 for errors and notices that matter at every setting, 1 for notable events, 2 for the
 *              detailed trace.
 * componentId  1 for a library handle, 3 for a hardware context, 4 for a software context.
 * userData     the pointer that was passed with the callback.
 * function     the reporting function's name.
 * message      the text; valid during the call only. */
typedef void (*ZAVlogCallback)(int level, int componentId, void* userData, const char* function,
                               const char* message);

enum {
    ZAV_SUCCESS = 0,
    ZAV_ERROR_EXPLOITER = 2,     /* exploiter name is null */
    ZAV_ERROR_CONTEXT = 3,       /* handle or context is null */
    ZAV_ERROR_LOGGER = 4,        /* the logger could not be made */
    ZAV_ERROR_MEMORY = 5,        /* out of memory, or the host's callback threw */
    ZAV_ERROR_WORKSPACE = 6,     /* temporary directory or file name not available */
    ZAV_ERROR_OPTION = 7,        /* option value that is not allowed, or a null option text */
    ZAV_ERROR_HW_GROUP = 101,    /* no such hardware group */
    ZAV_ERROR_HW_CONFIG = 102,   /* configuration file not written */
    ZAV_ERROR_HW_SCANNER = 103,  /* scanner not started, or ended with a status other than 0 */
    ZAV_ERROR_HW_OUTPUT = 104,   /* the scanner's output file is missing or malformed */
    ZAV_ERROR_HW_INSTANCE = 105, /* no such instance */
    ZAV_ERROR_HW_FIELD = 106,    /* no such field */
    ZAV_ERROR_HW_NO_SCAN = 107,  /* no valid scan: none yet, options changed since, or the scanner failed */
    ZAV_ERROR_HW_GROUP_DISABLED = 108, /* group not enabled */
    ZAV_ERROR_HW_POINTER = 109,        /* a pointer argument is null */
    ZAV_ERROR_SW_CONFIG = 201,         /* configuration or signatures file not written */
    ZAV_ERROR_SW_SIGNATURE = 202,      /* signature is null, not written, or refused by the scanner */
    ZAV_ERROR_SW_SCANNER = 203,        /* scanner not started, or ended with a status other than 0 */
    ZAV_ERROR_SW_OUTPUT = 204,         /* the scanner's output file is missing or malformed */
    ZAV_ERROR_SW_WARNINGS = 205,       /* the scanner's warnings file is missing or malformed */
    ZAV_ERROR_SW_NO_RESULTS = 206,     /* no valid results */
    ZAV_ERROR_SW_RESULT = 207,         /* result pointer is null */
    ZAV_ERROR_SW_VARIABLE = 208,       /* variable name is null, or the result has no such variable */
    ZAV_ERROR_SW_POINTER = 209,        /* a pointer argument is null */
    ZAV_ERROR_SW_NOT_FOUND = 210       /* no result carries the identifier */
};

/* The hardware groups, for `option` and `groupId` below. docs/hardware-groups.md lists the fields that the
 * bundled scanner provides, with their units. 17, 18 and 33 are unused. */
enum {
    ZAV_HW_ALL = 0,                     /* for ZAV_hw_setopt only */
    ZAV_HW_COMPONENT_ID = 1,            /* the computer: maker, product, serial number, identifiers */
    ZAV_HW_PROCESSOR = 2,               /* one for each logical processor */
    ZAV_HW_MEMORY = 3,                  /* main memory and swap */
    ZAV_HW_OPERATING_SYSTEM = 4,        /* the operating system */
    ZAV_HW_STORAGE = 5,                 /* disks and optical drives */
    ZAV_HW_IP_ADDRESS = 6,              /* IPv4 addresses */
    ZAV_HW_NETWORK_ADAPTER = 7,         /* network interfaces */
    ZAV_HW_DISK_PARTITION = 8,          /* entries of partition tables */
    ZAV_HW_POINTING_DEVICE = 9,         /* mice, touchpads, tablets */
    ZAV_HW_KEYBOARD = 10,               /* keyboards */
    ZAV_HW_LOGICAL_DRIVE = 11,          /* mounted file systems */
    ZAV_HW_IPX_ADDRESS = 12,            /* IPX addresses */
    ZAV_HW_VIDEO = 13,                  /* display controllers */
    ZAV_HW_PRINTER = 14,                /* printers */
    ZAV_HW_REGIONAL = 15,               /* locale, time zone, keyboard layout */
    ZAV_HW_SYSTEM_ENCLOSURE = 16,       /* chassis */
    ZAV_HW_UNIX_SYSTEM_PARAMS = 19,     /* kernel, host name, system limits */
    ZAV_HW_SCAN_INFO = 20,              /* the scan itself: what was asked for, and what could not be read */
    ZAV_HW_PC_SYSTEM_PARAMS = 21,       /* firmware and main board */
    ZAV_HW_SERIAL_PORT = 22,            /* serial ports */
    ZAV_HW_PARALLEL_PORT = 23,          /* parallel ports */
    ZAV_HW_SMBIOS = 24,                 /* structures of the firmware's tables */
    ZAV_HW_SOFTWARE_PACKAGES = 25,      /* installed packages */
    ZAV_HW_INSTALLED_PATCHES = 26,      /* installed patches */
    ZAV_HW_PARTITION = 27,              /* block devices that carry a file system, swap or a volume */
    ZAV_HW_USB_DEVICE = 28,             /* USB devices */
    ZAV_HW_PCI_DEVICE = 29,             /* PCI devices */
    ZAV_HW_MODEM = 30,                  /* modems */
    ZAV_HW_MEMORY_MODULES = 31,         /* memory modules */
    ZAV_HW_MONITOR = 32,                /* connected displays */
    ZAV_HW_LPAR = 34,                   /* the logical partition that the system runs in */
    ZAV_HW_SERVICE_INFO = 35,           /* services */
    ZAV_HW_USER_ACCOUNT_INFO = 36,      /* accounts */
    ZAV_HW_LAST_LOGGED_USER = 37,       /* the latest login */
    ZAV_HW_SCREEN_SAVER_INFO = 38,      /* screen savers */
    ZAV_HW_OPERATING_SYSTEM_CSIDL = 39, /* special folders of Windows */
    ZAV_HW_WIN_CLUSTER = 40,            /* Windows clusters */
    ZAV_HW_WIN_CLUSTER_NODE = 41,       /* their nodes */
    ZAV_HW_VEQ_CLUSTER = 42,            /* VEQ clusters */
    ZAV_HW_VEQ_CLUSTER_NODE = 43,       /* their nodes */
    ZAV_HW_PHYSICAL_PROCESSOR = 44,     /* one for each processor package */
    ZAV_HW_HOST_COMPONENT_ID = 45,      /* the computer that hosts this virtual one */
    ZAV_HW_CPU_METER = 46,              /* processor counters */
    ZAV_HW_UNIX_CPU_METER = 47,         /* processor counters of UNIX */
    ZAV_HW_WIN_CPU_METER = 48,          /* processor counters of Windows */
    ZAV_HW_VIRTUAL_MACHINE = 49,        /* virtual machines on this computer */
    ZAV_HW_VIRTUAL_MACHINE_GUEST = 50,  /* the virtual machine or container that this system runs in */
    ZAV_HW_IPV6_ADDRESS = 51            /* IPv6 addresses */
};

/* ---- The library handle ---------------------------------------------------------------------------- */

/* Opens a library handle and stores it in *handle.
 * exploiterName  the calling product's name; copied. It is looked up among the registered products of
 *                /etc/zav/zav.ini.
 * callback       receives the messages and userData; null for none.
 * tempDir        directory for temporary files; null for the one named by TEMP or TMP, else /tmp.
 * zavDir         the directory of the scanners; null for the one that /etc/zav/zav.ini names.
 *                A missing file, an unregistered product and a missing directory are logged at level 0
 *                and do not fail the call.
 * Returns 0; ZAV_ERROR_EXPLOITER for a null name; ZAV_ERROR_CONTEXT for a null handle;
 * ZAV_ERROR_LOGGER or ZAV_ERROR_MEMORY when memory ran out; ZAV_ERROR_WORKSPACE when no temporary
 * directory could be made.
 *     ZAVCtx* zav = NULL;
 *     int code = ZAV_init("my product", NULL, NULL, NULL, NULL, &zav); */
ZAV_EXPORT int ZAV_init(const char* exploiterName, ZAVlogCallback callback, void* userData,
                        const wchar_t* tempDir, const wchar_t* zavDir, ZAVCtx** handle);

/* Deletes the handle's temporary files and directory and releases the handle; free its contexts first.
 * Returns 0; ZAV_ERROR_CONTEXT for null; ZAV_ERROR_MEMORY when the callback threw; everything is
 * released even then. */
ZAV_EXPORT int ZAV_free(ZAVCtx* handle);

/* ---- Hardware -------------------------------------------------------------------------------------- */

/* Makes a hardware context on an open handle, with every group disabled. It logs to a callback of its
 * own. A temporary directory that cannot be made is logged; the next scan then fails with
 * ZAV_ERROR_HW_CONFIG.
 * Returns 0; ZAV_ERROR_CONTEXT for a null library; ZAV_ERROR_HW_POINTER for a null context;
 * ZAV_ERROR_MEMORY, and then *context is null. */
ZAV_EXPORT int ZAV_hw_init(ZAVCtx* library, ZAVlogCallback callback, void* userData, ZAVHwCtx** context);

/* Enables (value 1) or disables (value 0) the group with the id `option`, 1 to 51, or all groups with
 * option 0. Results of an earlier scan are no longer available, but pointers that were returned stay
 * valid.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_OPTION for another value; ZAV_ERROR_HW_GROUP for another
 * option.
 *     ZAV_hw_setopt(hw, ZAV_HW_PROCESSOR, 1); */
ZAV_EXPORT int ZAV_hw_setopt(ZAVHwCtx* context, int option, unsigned char value);

/* Scans the enabled groups: runs the scanner, waits for it without a time limit, and reads what it
 * wrote. The results of the previous scan are released first. Every line that the scanner prints is
 * logged at level 2 as soon as it is printed. A group without instances is known to be empty only if the
 * group ScanInfo, which is enabled like any other, lists it as complete.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_HW_CONFIG; ZAV_ERROR_HW_SCANNER; ZAV_ERROR_HW_OUTPUT, and
 * then the instances before the fault can be read; ZAV_ERROR_MEMORY. */
ZAV_EXPORT int ZAV_hw_run(ZAVHwCtx* context);

/* *returnCode: -1 while there is no valid scan, else the scanner's exit status (128 + n when signal n
 * ended it).
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_HW_POINTER. */
ZAV_EXPORT int ZAV_hw_get_returncode(ZAVHwCtx* context, int* returnCode);

/* *name: the name of a group, such as L"OperatingSystem" for 4; static text. Needs no scan.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_HW_GROUP, also for the unused ids 17, 18 and 33;
 * ZAV_ERROR_HW_POINTER. */
ZAV_EXPORT int ZAV_hw_get_group_name(ZAVHwCtx* context, int groupId, const wchar_t** name);

/* *count: how many instances of the group the scan found; they are numbered from 0 in the scanner's
 * order.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_HW_POINTER; ZAV_ERROR_HW_NO_SCAN; ZAV_ERROR_HW_GROUP;
 * ZAV_ERROR_HW_GROUP_DISABLED. */
ZAV_EXPORT int ZAV_hw_get_group_instances(ZAVHwCtx* context, int groupId, int* count);

/* *names: the instance's field names in the scanner's order, null when it has none; *count: how many.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_HW_POINTER; ZAV_ERROR_HW_NO_SCAN; ZAV_ERROR_HW_GROUP;
 * ZAV_ERROR_HW_GROUP_DISABLED; ZAV_ERROR_HW_INSTANCE. */
ZAV_EXPORT int ZAV_hw_get_fields(ZAVHwCtx* context, int groupId, int instance, const wchar_t*** names,
                                 int* count);

/* *value: the text of the instance's first field of that name (case-sensitive); L"" when the scanner gave
 * none.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_HW_POINTER; ZAV_ERROR_HW_NO_SCAN; ZAV_ERROR_HW_GROUP;
 * ZAV_ERROR_HW_GROUP_DISABLED; ZAV_ERROR_HW_INSTANCE; ZAV_ERROR_HW_FIELD. */
ZAV_EXPORT int ZAV_hw_get_value(ZAVHwCtx* context, int groupId, int instance, const wchar_t* field,
                                const wchar_t** value);

/* Deletes the context's temporary files and releases it with all its results.
 * Returns 0; ZAV_ERROR_CONTEXT for null; ZAV_ERROR_MEMORY when the callback threw; everything is
 * released even then. */
ZAV_EXPORT int ZAV_hw_free(ZAVHwCtx* context);

/* ---- Software -------------------------------------------------------------------------------------- */

/* Makes a software context on an open handle, without options. It logs to a callback of its own. A
 * temporary directory that cannot be made is logged; evaluations then fail with ZAV_ERROR_SW_CONFIG.
 * Returns 0; ZAV_ERROR_CONTEXT for a null library; ZAV_ERROR_SW_POINTER for a null context;
 * ZAV_ERROR_MEMORY, and then *context is null. */
ZAV_EXPORT int ZAV_sw_init(ZAVCtx* library, ZAVlogCallback callback, void* userData, ZAVSwCtx** context);

/* Presets the variable `name` for the signature whose identifier is `scope`. There is one preset per
 * name: setting it again replaces value and scope. All texts are copied; empty ones are allowed. They
 * are passed to the scanner unescaped, so '<', '&' and '"' must be written as in XML.
 * Presets last as long as the context. Results of an earlier evaluation are no longer available, but
 * pointers that were returned stay valid.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_OPTION for a null text, and then nothing changes;
 * ZAV_ERROR_MEMORY.
 *     ZAV_sw_setopt_variable(sw, L"minimum", L"2.0", L"c1b2...");   // for one signature */
ZAV_EXPORT int ZAV_sw_setopt_variable(ZAVSwCtx* context, const wchar_t* name, const wchar_t* value,
                                      const wchar_t* scope);

/* Adds a setting of a scanner plug-in. Repeated settings are all kept, in order. The rest is as for
 * ZAV_sw_setopt_variable.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_OPTION for a null text, and then nothing changes;
 * ZAV_ERROR_MEMORY. */
ZAV_EXPORT int ZAV_sw_setopt_config(ZAVSwCtx* context, const wchar_t* plugin, const wchar_t* attribute,
                                    const wchar_t* value);

/* Evaluates one signature, given as XML text: runs the scanner, waits for it without a time limit, and
 * reads what it wrote. The results of the previous evaluation are released first. Every line that the
 * scanner prints is logged at level 2 as soon as it is printed.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_SW_SIGNATURE for null, which keeps the previous results, or
 * when the scanner ended with status 3; ZAV_ERROR_SW_CONFIG; ZAV_ERROR_SW_SCANNER;
 * ZAV_ERROR_SW_OUTPUT, and then there are no results; ZAV_ERROR_SW_WARNINGS, and then all results can
 * be read, but no warnings; ZAV_ERROR_WORKSPACE when there was no name for a file that the scanner
 * writes; ZAV_ERROR_MEMORY, and then there are no results.
 *     if (ZAV_sw_evaluate(sw, L"<Signature guid=\"c1b2...\">...</Signature>") == ZAV_SUCCESS) ... */
ZAV_EXPORT int ZAV_sw_evaluate(ZAVSwCtx* context, const wchar_t* signature);

/* Evaluates the signatures of an existing file, as ZAV_sw_evaluate does. The path is passed to the scanner
 * unchanged; the library does not check whether the file can be read.
 * Returns what ZAV_sw_evaluate returns. */
ZAV_EXPORT int ZAV_sw_evaluate_file(ZAVSwCtx* context, const wchar_t* signatureFile);

/* Evaluates `count` signatures, each given as XML text, in one run of the scanner, as ZAV_sw_evaluate does.
 * `count` may be 0.
 * Returns what ZAV_sw_evaluate returns, but ZAV_ERROR_SW_SIGNATURE also when the signatures could not
 * be written or one of them is null. */
ZAV_EXPORT int ZAV_sw_evaluate_multi(ZAVSwCtx* context, const wchar_t** signatures, unsigned int count);

/* *results: every matched signature in the scanner's order, null when there is none; *count: how many.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_SW_NO_RESULTS; ZAV_ERROR_SW_POINTER; ZAV_ERROR_MEMORY.
 *     ZAVSwResult** results = NULL;
 *     int count = 0;
 *     ZAV_sw_get_results(sw, &results, &count); */
ZAV_EXPORT int ZAV_sw_get_results(ZAVSwCtx* context, ZAVSwResult*** results, int* count);

/* *result: the first matched signature with that identifier (case-sensitive). Works in any state of the
 * context; after an option was set, it uses the previous evaluation. Several threads may look up results
 * and get values at the same time, as long as no other function is called on the context.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_SW_POINTER for a null result or guid;
 * ZAV_ERROR_SW_NOT_FOUND. */
ZAV_EXPORT int ZAV_sw_find_result_by_guid(ZAVSwCtx* context, const wchar_t* guid, ZAVSwResult** result);

/* *results: all matched signatures with that identifier, in the scanner's order; *count: how many.
 * Repeated calls return the same array. Works in any state of the context.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_SW_POINTER; ZAV_ERROR_SW_NOT_FOUND; ZAV_ERROR_MEMORY. */
ZAV_EXPORT int ZAV_sw_find_results_by_guid(ZAVSwCtx* context, const wchar_t* guid, ZAVSwResult*** results,
                                           unsigned int* count);

/* *value: the text of the result's variable of that name (case-sensitive).
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_SW_NO_RESULTS; ZAV_ERROR_SW_RESULT; ZAV_ERROR_SW_POINTER;
 * ZAV_ERROR_SW_VARIABLE. */
ZAV_EXPORT int ZAV_sw_get_value(ZAVSwCtx* context, ZAVSwResult* result, const wchar_t* name,
                                const wchar_t** value);

/* *names: the names of the result's variables in ascending order, null when there is none; *count: how
 * many.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_SW_NO_RESULTS; ZAV_ERROR_SW_POINTER; ZAV_ERROR_SW_RESULT;
 * ZAV_ERROR_MEMORY. */
ZAV_EXPORT int ZAV_sw_get_variables(ZAVSwCtx* context, ZAVSwResult* result, const wchar_t*** names,
                                    int* count);

/* *metadata: the result's metadata as indented XML text, L"" when it has none. The text is UTF-8: each
 * character is one byte of it, taken as a signed number. With the bundled scanner it ends with the
 * element MatchedName, the signature's name with its variables replaced.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_SW_NO_RESULTS; ZAV_ERROR_SW_POINTER; ZAV_ERROR_SW_RESULT;
 * ZAV_ERROR_MEMORY. */
ZAV_EXPORT int ZAV_sw_get_metadata(ZAVSwCtx* context, ZAVSwResult* result, const wchar_t** metadata);

/* *guid: the result's identifier, L"" when the scanner gave none.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_SW_NO_RESULTS; ZAV_ERROR_SW_POINTER; ZAV_ERROR_SW_RESULT;
 * ZAV_ERROR_MEMORY. */
ZAV_EXPORT int ZAV_sw_get_guid(ZAVSwCtx* context, ZAVSwResult* result, const wchar_t** guid);

/* *warnings: the warnings of the last evaluation, each as XML text of one line, in UTF-8 as metadata is;
 * *count: how many. Both are left unchanged when there were none, so initialise them. Works in any state
 * of the context.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_SW_POINTER; ZAV_ERROR_MEMORY.
 *     const wchar_t** warnings = NULL;
 *     int count = 0;
 *     ZAV_sw_get_warnings(sw, &warnings, &count); */
ZAV_EXPORT int ZAV_sw_get_warnings(ZAVSwCtx* context, const wchar_t*** warnings, int* count);

/* *returnCode: -1 while there are no valid results, else the scanner's exit status (128 + n when signal
 * n ended it). After an evaluation that failed with ZAV_ERROR_SW_OUTPUT or ZAV_ERROR_SW_WARNINGS it is 0.
 * Returns 0; ZAV_ERROR_CONTEXT; ZAV_ERROR_SW_POINTER; ZAV_ERROR_MEMORY. */
ZAV_EXPORT int ZAV_sw_get_returncode(ZAVSwCtx* context, int* returnCode);

/* Deletes the context's temporary files and releases it with all its results.
 * Returns 0; ZAV_ERROR_CONTEXT for null; ZAV_ERROR_MEMORY when the callback threw; everything is
 * released even then. */
ZAV_EXPORT int ZAV_sw_free(ZAVSwCtx* context);

#ifdef __cplusplus
}
#endif

#endif /* ZAV_H */
