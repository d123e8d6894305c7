#include "kest/Launcher.h"

#include <cerrno>
#include <new>

#include "kest/KeptProcess.linux.h"
#include "kest/Pipe.linux.h"
#include "kest/SpawnRequest.linux.h"

namespace kest {

namespace {

StartedProgram notStarted(int error) {
    if (error == ENOMEM) throw std::bad_alloc();
    StartedProgram none;
    none.error = error;
    return none;
}

}  // namespace

StartedProgram startProgram(const Program& program) {
    StartedProgram started;
    Descriptor writeEnd;
    if (const int error = openPipe(started.output, writeEnd)) return notStarted(error);
    const SpawnRequest request(program, writeEnd);
    auto process = std::make_unique<KeptProcess>();
    if (const int error = process->start(request)) return notStarted(error);
    started.process = std::move(process);
    return started;
}

}  // namespace kest
