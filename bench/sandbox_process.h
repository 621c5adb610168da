// A sandbox in a process of its own, so that its work does not count as the program's. It ends with this
// object.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

#include "base/settings.h"
#include "sandbox/sandbox.h"
#include "tests/support/test_home.h"

class SandboxProcess {
 public:
    // Starts a world under `home`, has `prepare` change it (in the other process, before this returns),
    // points the settings of this process at it and binds the main wallet. Throws if it does not start. No
    // other thread may run.
    SandboxProcess(const TestHome& home, sandbox::WorldOptions world,
                   const std::function<void(sandbox::Sandbox&)>& prepare = {});
    ~SandboxProcess();
    SandboxProcess(const SandboxProcess&) = delete;
    SandboxProcess& operator=(const SandboxProcess&) = delete;

    const std::string& token_id() const { return token_id_; }
    const std::string& wallet_id() const { return wallet_id_; }

 private:
    pid_t process_ = -1;
    int stop_pipe_ = -1;
    std::string token_id_;
    std::string wallet_id_;
};
