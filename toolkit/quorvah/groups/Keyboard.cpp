#include <linux/input-event-codes.h>

#include <string>

#include "schema/groups/Keyboard.h"
#include "toolkit/machine/text/ShellVariables.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/InputDevices.h"
#include "toolkit/quorvah/sources/InputMaker.h"

namespace toolkit::quorvah {

namespace {

// Power buttons and remote controls have keys, but not all letters.
bool isKeyboard(const InputDevice& device) {
    return device.keys.count(KEY_Q, KEY_P) == 10 && device.keys.count(KEY_A, KEY_L) == 9 &&
           device.keys.count(KEY_Z, KEY_M) == 7;
}

unsigned functionKeys(const InputDevice& device) {
    return device.keys.count(KEY_F1, KEY_F10) + device.keys.count(KEY_F11, KEY_F12) +
           device.keys.count(KEY_F13, KEY_F24);
}

// The layout that the system gives to all its keyboards.
std::string layoutOf(const Root& root) {
    const ShellVariables keyboard(root.read("/etc/default/keyboard").value_or(""));
    std::string layout = keyboard.value("XKBLAYOUT");
    if (!layout.empty()) return layout;
    const ShellVariables console(root.read("/etc/vconsole.conf").value_or(""));
    const std::string graphical = console.value("XKBLAYOUT");
    return graphical.empty() ? console.value("KEYMAP") : graphical;
}

constexpr const char* kSources[] = {"/proc/bus/input/devices", "/sys/class"};

void gather(GatheringContext& context, GroupData& data) {
    const std::string layout = layoutOf(context.root());
    for (const InputDevice& device : readInputDevices(context.root())) {
        if (!isKeyboard(device)) continue;
        Instance& keyboard = data.add(device.id);
        keyboard.set("Name", context.firmwareText(device.name));
        keyboard.set("Manufacturer", inputMaker(context, device));
        keyboard.set("NumberOfFunctionKeys", functionKeys(device));
        keyboard.set("Layout", layout);
        keyboard.set("InterfaceType", inputBusName(device.bus));
        keyboard.set("VendorId", device.vendor);
        keyboard.set("ProductId", device.product);
        keyboard.set("Phys", device.phys);
    }
}

}  // namespace

constexpr Group kKeyboard{.displayName = "Keyboard",
                          .xmlName = "Keyboard",
                          .fields = schema::kKeyboard.fields,
                          .gather = gather,
                          .sources = kSources};

}  // namespace toolkit::quorvah
