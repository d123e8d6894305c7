// Prints the processors of this machine and the version of the installed bash.
#include <iostream>
#include <string_view>
#include <zav.hpp>

constexpr std::string_view kSignature =
    "<Signature guid='bash' name='GNU Bash'><Match><Package id='p' name='bash'/></Match>"
    "<Output><Variable name='version' value='${p.upstream}'/></Output></Signature>";

void printErrors(const zav::Message& message) {
    if (message.level == 0) std::cerr << message.text << '\n';
}

int main() {
    try {
        const zav::Library library("my product", {TOOLKIT, "", printErrors});

        const zav::Hardware hardware = library.hardware({"Processor"});
        for (const zav::Instance processor : hardware.instances("Processor"))
            std::cout << processor["DeviceID"] << ' ' << processor["Name"] << '\n';

        const zav::Software software = library.software(kSignature);
        for (const zav::Result result : software.results())
            std::cout << result.guid() << ' ' << result["version"] << '\n';
    } catch (const zav::Error& error) {
        std::cerr << "inventory: " << error.what() << " (" << error.code() << ")\n";
        return 1;
    }
}
