#include "cli/export/InventoryDatabase.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "cli/formats/JsonDocument.h"
#include "cli/scan/ProductIdentity.h"
#include "cli/system/Failure.h"
#include "schema/Catalogue.h"

namespace zavcli {

namespace {

using Json = nlohmann::ordered_json;

// The mark of a database of this command, "zavd".
constexpr std::int64_t kApplication = 0x7A617664;

std::string quotedName(std::string_view name) {
    std::string quoted = "\"";
    for (const char character : name) {
        quoted += character;
        if (character == '"') quoted += character;
    }
    return quoted + '"';
}

std::string_view typeOf(const schema::Field& field) {
    if (field.list) return "TEXT";
    switch (field.type) {
        case schema::Type::Count:
        case schema::Type::Integer:
        case schema::Type::Boolean:
            return "INTEGER";
        case schema::Type::Decimal:
            return "REAL";
        default:
            return "TEXT";
    }
}

void bindJson(SqliteStatement& statement, int parameter, const Json& value) {
    if (value.is_null()) return statement.bindNull(parameter);
    if (value.is_boolean()) return statement.bind(parameter, std::int64_t{value.get<bool>()});
    if (value.is_number_integer()) return statement.bind(parameter, value.get<std::int64_t>());
    if (value.is_number()) return statement.bind(parameter, value.get<double>());
    if (value.is_string()) return statement.bind(parameter, value.get_ref<const std::string&>());
    statement.bind(parameter, value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

}  // namespace

InventoryDatabase::InventoryDatabase(const std::string& path) : database_(path) {
    const bool isEmpty = database_.number("SELECT count(*) FROM sqlite_schema") == 0;
    if (!isEmpty && database_.number("PRAGMA application_id") != kApplication) {
        throw Failure(
            kExitFailed,
            fmt::format("{} is a database, but not one of 'zav export'; it is left as it is", path));
    }
    // Somebody else may have changed the file, so what is in it runs nothing that could do harm.
    database_.execute(fmt::format(
        "PRAGMA trusted_schema = OFF; PRAGMA application_id = {}; PRAGMA foreign_keys = ON", kApplication));
    database_.execute(
        "CREATE TABLE IF NOT EXISTS host (name TEXT PRIMARY KEY, time TEXT, privileged INTEGER, sanitized "
        "INTEGER)");
    makeTable("status", "\"group\" TEXT, status TEXT, reason TEXT");
    makeTable("other_field", "\"group\" TEXT, instance INTEGER, name TEXT, value TEXT");
    makeTable("software",
              "guid TEXT, name TEXT, version TEXT, place TEXT, package TEXT, cpe TEXT, purl TEXT");
}

void InventoryDatabase::makeTable(const std::string& name, const std::string& columns) {
    database_.execute(
        fmt::format("CREATE TABLE IF NOT EXISTS {} (host TEXT REFERENCES host ON DELETE CASCADE{}{}); "
                    "CREATE INDEX IF NOT EXISTS {} ON {} (host)",
                    quotedName(name), columns.empty() ? "" : ", ", columns, quotedName(name + "_host"),
                    quotedName(name)));
}

// The catalogue grows, so a table of an earlier version may lack fields.
void InventoryDatabase::makeGroupTable(const Group& group) {
    const schema::Group* const described = schema::findGroup(group.name);
    if (described == nullptr) return;
    makeTable(group.name, "");
    std::set<std::string> known;
    SqliteStatement columns(database_, fmt::format("PRAGMA table_info({})", quotedName(group.name)));
    while (columns.next()) known.insert(columns.text(1));
    for (const schema::Field& field : described->fields) {
        if (known.contains(std::string(field.name))) continue;
        database_.execute(fmt::format("ALTER TABLE {} ADD COLUMN {} {}", quotedName(group.name),
                                      quotedName(field.name), typeOf(field)));
    }
}

void InventoryDatabase::put(const std::string& host, const SavedInventory& hardware,
                            const SoftwareInventory* software) {
    database_.execute("BEGIN");
    for (const Group& group : hardware.groups) makeGroupTable(group);
    putHost(host, hardware);
    for (const Group& group : hardware.groups) putGroup(host, group);
    if (software != nullptr) putSoftware(host, *software);
    database_.execute("COMMIT");
}

void InventoryDatabase::putHost(const std::string& host, const SavedInventory& hardware) {
    SqliteStatement forget(database_, "DELETE FROM host WHERE name = ?");
    forget.bind(1, std::string_view(host));
    forget.execute();
    SqliteStatement insert(database_, "INSERT INTO host VALUES (?, ?, ?, ?)");
    insert.bind(1, std::string_view(host));
    if (!hardware.time.empty()) insert.bind(2, std::string_view(hardware.time));
    if (hardware.privileged) insert.bind(3, std::int64_t{*hardware.privileged});
    insert.bind(4, std::int64_t{hardware.sanitized});
    insert.execute();
}

void InventoryDatabase::putGroup(const std::string& host, const Group& group) {
    SqliteStatement status(database_, "INSERT INTO status VALUES (?, ?, ?, ?)");
    status.bind(1, std::string_view(host));
    status.bind(2, std::string_view(group.name));
    status.bind(3, statusWord(group.status.state));
    if (!group.status.reason.empty()) status.bind(4, std::string_view(group.status.reason));
    status.execute();
    for (std::size_t number = 0; number < group.instances.size(); ++number) putInstance(host, group, number);
}

void InventoryDatabase::putInstance(const std::string& host, const Group& group, std::size_t number) {
    const schema::Group* const described = schema::findGroup(group.name);
    const Json values = instanceJson(group.name, group.instances[number], JsonValues::Typed);
    std::string names = "host";
    std::string places = "?";
    std::vector<const Json*> own;
    SqliteStatement other(database_, "INSERT INTO other_field VALUES (?, ?, ?, ?, ?)");
    for (const auto& [name, value] : values.items()) {
        if (described != nullptr && schema::findField(*described, name) != nullptr) {
            names.append(", ").append(quotedName(name));
            places += ", ?";
            own.push_back(&value);
            continue;
        }
        other.bind(1, std::string_view(host));
        other.bind(2, std::string_view(group.name));
        other.bind(3, static_cast<std::int64_t>(number));
        other.bind(4, std::string_view(name));
        bindJson(other, 5, value);
        other.execute();
    }
    if (described == nullptr) return;
    SqliteStatement insert(
        database_, fmt::format("INSERT INTO {} ({}) VALUES ({})", quotedName(group.name), names, places));
    insert.bind(1, std::string_view(host));
    int parameter = 1;
    for (const Json* const value : own) bindJson(insert, ++parameter, *value);
    insert.execute();
}

void InventoryDatabase::putSoftware(const std::string& host, const SoftwareInventory& software) {
    SqliteStatement insert(database_, "INSERT INTO software VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    for (const MatchedSignature& match : software.results) {
        const ProductIdentity identity = identityOf(match);
        insert.bind(1, std::string_view(host));
        int parameter = 1;
        for (const std::string* const text : {&match.guid, &identity.name, &identity.version, &identity.place,
                                              &identity.package, &identity.cpe, &identity.purl}) {
            ++parameter;
            if (!text->empty()) insert.bind(parameter, std::string_view(*text));
        }
        insert.execute();
    }
}

std::string InventoryDatabase::content() {
    return database_.content();
}

}  // namespace zavcli
