// What the help says below the options.
#pragma once

namespace zavcli {

inline constexpr const char* kMainFooter = R"(Examples:
  zav                                      show what this machine is, and what needs attention
  zav hw                                   show the hardware and the system
  zav hw Processor Memory                  show two groups only
  zav hw --format json --output pc.json    write everything to a file, for a program
  zav sw                                   show which known software is installed, and where
  zav sw signatures.xml                    show which of the described software is installed
  zav sbom -o machine.cdx.json             write a bill of materials of the software
  zav report -o machine.html               write all of it as a page for a browser
  zav export --sqlite fleet.db             write all of it into a database
  zav diff monday.json tuesday.json        show what has changed between two inventories
  zav capture machine.tar.zst              archive what a scan reads, to scan it elsewhere
  zav doctor                               find out why an inventory does not work

Exit status: 0 success, 1 the command failed, 2 the command line is wrong, 3 the inventory is written, but requested
data could not be read; 'zav diff' has others. If a signal ends the command, it cleans up first and its parent sees
that signal. 'zav hw --help' and the like describe formats and options.)";

inline constexpr const char* kHardwareFooter =
    R"(Groups are named as 'zav groups' lists them, or by number. Names are case-insensitive, and blanks are ignored:
'zav hw OperatingSystem', 'zav hw "operating system"' and 'zav hw --group 4' are the same.

Formats:
  table  for people. Several instances form a table below the values that they share. Of the whole inventory, long groups
         and long values are shortened; chosen groups or --all shows them completely. Numbers have units that people read, such as
         GB and GHz; the other formats are exact.
  json   {"scan": {...}, "status": {"Processor": {"status": "complete"}, ...},
         "groups": {"Processor": [{"DeviceID": "cpu0", ...}, ...], ...}}; all values are strings without --typed
  jsonl  a line per fact, with the host and the time of the scan: {"host", "time", "group", "instance", "fields": {...}}
         for an instance, {"host", "time", "group", "status"} for a group, {"host", "time", "scan": {...}} for the scan
  csv    of one group: a column per field and a record per instance. --csv-dir DIR writes such a file for each group, and
         _status.csv. Several groups on standard output have one record per field: group,instance,field,value. Instances
         are numbered from 0. The record with the field _status and without an instance holds the status of a group.
  xml    the format of the scanner: one element per instance below the root, one element per field in it. The element
         ScanInfo, which reports the status of each group, is always included.
  yaml   the document of json

A group without instances proves that the machine has none only if its status is complete. The other statuses are
reported on standard error: partial (data is missing), unread (nothing could be read), unsupported (the scanner does
not implement the group), not-applicable (this system or the scanned directory cannot have it) and unknown (the
scanner does not report it).

The scanner 'quorvah' is taken from --toolkit, else from the toolkit that /etc/zav/zav.ini names, else from the
toolkit that is bundled with this command. Only the bundled scanner supports --root, --sanitize, --no-volatile and
--pretty, so an installed toolkit is then not used.

--sanitize makes an inventory that can be shared. Within it, equal values have equal hashes. The key of the hashes is
random and not kept, so they are different in each inventory.

--output replaces an existing file and does not follow a link. Pipes, devices and directories are refused.

Examples:
  sudo zav hw                                      root may read serial numbers and memory modules
  zav hw "Software Packages" --all
  zav hw 25 --format csv --output packages.csv
  zav hw --root /mnt/image --format json           scan the system below /mnt/image instead of this machine
  zav hw --sanitize --format json -o share.json    write an inventory that does not identify the machine

Exit status: 0 the inventory is written, 1 the command failed, 2 the command line is wrong, 3 the inventory is
written, but a group is unread or partial for another reason than a missing permission, or nothing could be read of a
group that was named.)";

inline constexpr const char* kSoftwareFooter =
    R"(A signature file describes software: which packages, files or contents show that it is installed, and which values,
such as its version, to report. A directory stands for all *.xml files in it. Files that can be joined are evaluated
in one run. Without FILE, the signatures that come with the command are used, and all directories are searched
(FileSystem.wholeTree=true). --list shows what they recognise.

--variable NAME=VALUE presets a variable for all signatures, NAME=VALUE@GUID for one signature. The text after the
last '@' is an identifier if a signature in the files has it, or if it has the form
6f0d1c52-8f0e-4c39-9a55-0b5a3d1f0001. A variable has one value per run.
--config PLUGIN.ATTRIBUTE=VALUE changes a setting of the scanner.
--guid GUID shows only the results of this signature (case-insensitive). If it does not match, a message says so, the
result is empty, and the exit status is 0. An identifier that is in none of the files is refused.
--unmanaged shows only results that no package manager of the system owns, and those that do not report it.

Formats:
  table  for people: a line per match with its name, version, place and package; "none" if no package manager owns it,
         "unknown" if the signature does not report it. Packages of programming languages follow. With --details, a
         paragraph per match with all values and the first piece of evidence.
  json   {"scan": {...}, "complete": true, "results": [{"guid", "name", "cpe", "purl", "variables": {...},
         "metadata": {...}, "evidence": [...]}, ...], "undecided": [{"guid", "name"}, ...], "warnings": [...]}; all
         values are strings; with --typed, unknown ones are null
  jsonl  a line per result, {"host", "time", "result": {...}}, per undecided signature and per warning, after a line
         {"host", "time", "scan": {...}, "complete": true}
  csv    one record per variable: result,guid,name,variable,value. Results are numbered from 0. The variables _cpe and
         _purl identify the product. A signature of which it is unknown whether it matches has a record without a
         number and with the variable _status. With --csv-dir DIR, the files results.csv, variables.csv, evidence.csv,
         undecided.csv and warnings.csv
  xml    the format of the scanner: one element MatchedSignature per match; complete="false" if one may be missing
  yaml   the document of json

What could not be examined, such as an unreadable file, is reported on standard error in every format.

The scanner 'quorvis' is taken from --toolkit, else from the toolkit that /etc/zav/zav.ini names, else from the
toolkit that is bundled with this command. Only the bundled scanner supports --root, so an installed toolkit is then
not used.

Examples:
  zav sw                                         all software that the signatures of the command recognise
  zav sw --unmanaged                             only what no package manager knows
  zav sw signatures.xml --format json --output software.json
  zav sw signatures.xml --variable minVersion=3.11 --config FileSystem.maxDepth=6
  zav sw signatures.xml --root /mnt/image        scan the system below /mnt/image instead of this machine
  zav sw --list                                  show what the signatures of the command recognise
  zav sw --suggest /usr/sbin/nginx > nginx.xml   draft a signature, to be corrected and tested
  zav sw --check signatures.xml                  show whether the file is valid, and the lines of the errors
  zav sw --explain GUID signatures.xml           show why this signature matches or not

Exit status: 0 the signatures are evaluated, with or without a match, or the files are valid; 1 the command failed, or
a file is not valid; 2 the command line is wrong, or a file cannot be read; 3 the results are written, but of a
signature it is unknown whether it matches, or results may be missing. Single files that are damaged or that may not
be read only cause warnings, unless --guid is given.)";

inline constexpr const char* kFactsFooter =
    R"(Formats:
  ansible     the document of 'zav hw --format json --typed' on one line. As the output of an executable file
              /etc/ansible/facts.d/zav.fact it is the variable ansible_local.zav of the machine.
  prometheus  metrics for the textfile collector of node_exporter: machine, operating system, processors, memory, number
              of packages, and whether each group is complete. It reads only the groups that it needs.

Examples:
  zav facts -g Processor -g Memory
  zav facts --format prometheus -o /var/lib/prometheus/node-exporter/zav.prom

Exit status: 0 the facts are written, also if a group is incomplete, because Ansible would drop them otherwise; 1 the
command failed, 2 the command line is wrong.)";

inline constexpr const char* kSbomFooter =
    R"(The document contains the operating system, the installed packages, the software that the signatures recognise, and
packages of programming languages, with the evidence for each. A package contains the software of its files. FILE and
--config have the same meaning as in 'zav sw'.

Formats:
  cyclonedx  CycloneDX 1.6 in JSON
  spdx       SPDX 2.3 in JSON

The same machine in the same state gives the same document: everything is sorted, and the serial number or namespace
is derived from the content. CycloneDX has a time only if the variable SOURCE_DATE_EPOCH gives one. SPDX requires a
time; without that variable it is the current one.

--hashes adds SHA-1 and SHA-256 of the files in the evidence, except those that other users may not read.

Examples:
  zav sbom                                       print the bill of this machine
  zav sbom --root /mnt/image -o image.cdx.json   of the system below /mnt/image
  zav sbom --format spdx --hashes -o machine.spdx.json

Exit status: 0 the document is written, 1 the command failed, 2 the command line is wrong, 3 the document is written,
but software may be missing because something could not be read.)";

inline constexpr const char* kReportFooter =
    R"(The page is one HTML file, which loads nothing from anywhere: an overview, a table per group that can be searched and
sorted, the software that the shipped signatures recognise with its evidence, and what could not be read. It contains what the
inventories contain, serial numbers and addresses included. --sanitize hashes those and leaves out the software, whose places
may have names of users.

OLD and FILE are what 'zav hw --format json' or '--format xml' wrote, or a scanner. They hold no software.

Examples:
  sudo zav report -o machine.html                       root may read serial numbers and memory modules
  zav report --no-software --sanitize -o share.html     a page that does not identify the machine
  zav report --from today.json --compare monday.json -o changes.html

Exit status: 0 the page is written, 1 the command failed, 2 the command line is wrong or OLD or FILE cannot be read, 3 the page
is written, but something could not be read for another reason than a missing permission.)";

inline constexpr const char* kExportFooter =
    R"(The database has a table per hardware group with a column per field, and the tables host, status, software and
other_field. The column host tells the hosts apart. What an earlier export wrote for the same host is replaced. Numbers and
truth values are numbers, lists are JSON arrays, and what is unknown is null.

The file of --from is what 'zav hw --format json' or '--format xml' wrote, or a scanner. It has no software.

Examples:
  sudo zav export --sqlite fleet.db                     this machine
  zav export --sqlite fleet.db --from web1.json --from db1.json
  sqlite3 fleet.db "SELECT host, VersionString FROM SoftwarePackages WHERE Name = 'openssl'"

Exit status: 0 the database is written, 1 the command failed, 2 the command line is wrong or a saved inventory cannot be
read, 3 the database is written, but something could not be read for another reason than a missing permission.)";

inline constexpr const char* kDiffFooter =
    R"(OLD and NEW are files that 'zav hw --format json' or '--format xml' wrote, or a scanner; '-' is standard input. Values
that change while the machine stays the same are left out, and so is the group ScanInfo. Instances are recognised by
their keys, such as the path of a disk.

Formats:
  text   for people: '-' an instance that is gone, '+' a new one; below a changed one, its fields with old and new value
  json   {"old": {...}, "new": {...}, "same": false, "machineDiffers": true, "groups": {"Storage": {"added": [...],
         "removed": [...], "changed": [{"key": {...}, "fields": {"Model": {"old": "A", "new": "B"}}}]}}, "notes": [...]}

If root wrote one inventory and another user the other, what only root sees is listed separately, as "needs": "root" in
JSON. Likewise "live": values that files below a directory do not have. --ignore-access leaves both out. What could not
be compared, such as a group that is only in one file, is reported on standard error.

Examples:
  zav diff monday.json tuesday.json
  zav hw --format json | zav diff saved.json -    what has changed since

Exit status: 0 no difference, 1 differences were written, 2 the command failed.)";

inline constexpr const char* kCaptureFooter =
    R"(FILE is an archive of the files that a hardware scan of this machine, or of the directory of --root, reads: tables of
the firmware, attributes of devices, lists of packages and accounts. Unpacked, it can be scanned again:

  zav capture machine.tar.zst
  mkdir machine && tar -C machine -xf machine.tar.zst
  zav hw --root machine

This gives the same inventory, except what only a running machine tells, such as free space of file systems. The end of
the name decides about the compression: .tar.zst, .tar.gz or .tar. Only its owner may read the file, because it contains
serial numbers, addresses and names of accounts. Hashes of passwords, and passwords in the configuration of printers,
guests and the kernel's command line, are left out. A scan as root reads more.

--sanitize replaces the private values of the inventory, wherever they are in the files, by others of the same form.
Files with private values beyond those, such as records of logins and tables of network addresses, are empty then.

Exit status: 0 the archive is written, 1 the command failed, 2 the command line is wrong, 3 the archive is written, but
something could not be read for another reason than a missing permission.)";

inline constexpr const char* kGroupsFooter =
    R"(Groups that the scanner does not gather, or that this machine cannot have, are marked. Without a scanner, the groups
are listed without marks. The fields of a group are listed with type, unit and meaning, as the scanner that comes with
this command has them; the scanner of another toolkit may have others.
Exit status: 0 the list is written, 1 the command failed, 2 the command line is wrong.)";

inline constexpr const char* kDoctorFooter =
    R"(Prints one line per check: ok, note (it works, but there is something to know) or problem (no inventory is possible).
The checks named 'ownership' report which other users could replace a scanner, with a command line that fixes it.
Root does not start such a scanner.
Exit status: 0 an inventory can be taken, 1 it cannot, 2 the command line is wrong.)";

}  // namespace zavcli
