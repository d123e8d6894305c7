// What the commands that run a scanner have in common.
#pragma once

#include <optional>
#include <string>

#include "cli/commands/Options.h"
#include "cli/formats/CsvWriter.h"
#include "cli/formats/JsonWriter.h"
#include "cli/formats/SoftwareTableWriter.h"
#include "cli/formats/TableWriter.h"
#include "cli/formats/XmlWriter.h"
#include "cli/formats/YamlWriter.h"
#include "cli/scan/Toolkit.h"
#include "cli/system/OutputFile.h"

namespace zavcli {

// The toolkit that holds the scanner. Prints a message if the configured toolkit is not used. Throws Failure.
Toolkit selectToolkit(const Options& options, const Scanner& scanner);

// Tells the scanner by its environment which directory to scan. Returns that directory, empty for this machine.
std::string passScannedRoot(const Options& options, const Scanner& scanner);

// Tells the hardware scanner by its environment which values to hide or omit.
void passScanOptions(const Options& options);

TableStyle tableStyle(const Options& options);

// The inventory of hardware or software in the requested format.
template <typename Inventory>
std::string formatted(const Inventory& inventory, const Options& options) {
    const JsonValues values = options.typed ? JsonValues::Typed : JsonValues::Text;
    switch (options.format) {
        case Format::Json:
            return jsonText(inventory, values);
        case Format::JsonLines:
            return jsonLines(inventory, values);
        case Format::Yaml:
            return yamlText(jsonText(inventory, values));
        case Format::Csv:
            return csvText(inventory, options.csvRaw ? CsvFormulas::Raw : CsvFormulas::Protected);
        case Format::Xml:
            return xmlText(inventory);
        case Format::Table:
            break;
    }
    return tableText(inventory, tableStyle(options));
}

// Where the inventory is written: the file of --output, the files in the directory of --csv-dir, else standard output.
class InventoryOutput {
  public:
    // Checks that the file can be written, and makes the directory. Throws Failure.
    explicit InventoryOutput(const Options& options);
    // Throws Failure.
    void write(const std::string& text);

    // The inventory of hardware or software in the requested format. Throws Failure.
    template <typename Inventory>
    void writeInventory(const Inventory& inventory) {
        if (options_.csvDirectory)
            writeFiles(csvFiles(inventory, options_.csvRaw ? CsvFormulas::Raw : CsvFormulas::Protected));
        else
            write(formatted(inventory, options_));
    }

  private:
    void writeFiles(const std::vector<CsvFile>& files);

    const Options& options_;
    std::optional<OutputFile> file_;
};

}  // namespace zavcli
