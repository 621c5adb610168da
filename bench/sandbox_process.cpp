#include "bench/sandbox_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

#include "tests/support/program_settings.h"
#include "wallet/binds.h"
#include "wallet/wallet_session.h"

namespace {

Json world_of(sandbox::Sandbox& box) {
    return {{"settings", program_settings(box.settings_for())},
            {"token_id", box.world().token_id},
            {"wallet_id", box.world().main_wallet.id}};
}

// The life of the other process: it serves until the pipe closes.
[[noreturn]] void serve(const sandbox::WorldOptions& world,
                        const std::function<void(sandbox::Sandbox&)>& prepare, int stop, int answer) {
    sandbox::Sandbox box({.world = world, .ports = {}});
    std::string error;
    if (!box.start(error)) ::_exit(1);
    if (prepare) prepare(box);
    const std::string text = dump_json(world_of(box), -1);
    if (::write(answer, text.data(), text.size()) != static_cast<ssize_t>(text.size())) ::_exit(1);
    ::close(answer);
    char nothing = 0;
    while (::read(stop, &nothing, 1) > 0) {
    }
    ::_exit(0);
}

}  // namespace

SandboxProcess::SandboxProcess(const TestHome& home, sandbox::WorldOptions world,
                               const std::function<void(sandbox::Sandbox&)>& prepare) {
    world.folder = home.folder();
    std::array<int, 2> stop{};
    std::array<int, 2> answer{};
    if (::pipe(stop.data()) != 0 || ::pipe(answer.data()) != 0) throw std::runtime_error("no pipe");
    process_ = ::fork();
    if (process_ == 0) {
        ::close(stop[1]);
        ::close(answer[0]);
        serve(world, prepare, stop[0], answer[1]);
    }
    ::close(stop[0]);
    ::close(answer[1]);
    stop_pipe_ = stop[1];
    std::string text;
    std::array<char, 4096> block{};
    for (ssize_t size = 0; (size = ::read(answer[0], block.data(), block.size())) > 0;)
        text.append(block.data(), static_cast<std::size_t>(size));
    ::close(answer[0]);
    Json served;
    if (!parse_json(text, served)) throw std::runtime_error("the sandbox of the measurement does not start");
    take_program_settings(json_member(served, "settings"));
    token_id_ = json_text(served, "token_id");
    wallet_id_ = json_text(served, "wallet_id");
    qv_clasp_init(home.folder() + "/program", "The Bursaria");
    qv_clasp_write_bind(wallet_id_);
}

SandboxProcess::~SandboxProcess() {
    {
        const WalletLock lock = qv_clasp_lock_wallet();
        qv_clasp_wipe_session();
    }
    qv_clasp_set_active_wallet_id("");
    ::close(stop_pipe_);
    ::waitpid(process_, nullptr, 0);
}
