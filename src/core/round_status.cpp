#include "core/round_status.h"

#include <algorithm>
#include <array>

#include "core/round_display.h"

namespace {

constexpr std::array BUSY_SET = {CONTROL_CONNECT,  CONTROL_UNBIND,   CONTROL_LOAD_TOKENS,
                                 CONTROL_SNAPSHOT, CONTROL_PREVIEW,  CONTROL_PAY,
                                 CONTROL_HISTORY,  CONTROL_SETTINGS, CONTROL_VAULT};

std::string caption_of(const Round& round, int control) {
    switch (control) {
        case CONTROL_CONNECT:
            return connect_caption(round.wallet);
        case CONTROL_LOAD_TOKENS:
            return "Load tokens";
        case CONTROL_SNAPSHOT:
            return "Snapshot";
        case CONTROL_PREVIEW:
            return "Preview";
        case CONTROL_PAY:
            return "Pay";
        default:
            return "";
    }
}

void render_status(Round& round) {
    const RoundState& state = round.state;
    std::string line = state.status_text;
    if (state.status_animated) line += " " + std::string(static_cast<std::size_t>(state.status_dots), '.');
    round.window.set_text(CONTROL_STATUS, line);
}

// Pay is enabled by a successful preview only; a list of nothing but skips is none.
bool pay_may_be_enabled(const RoundState& state) {
    return std::any_of(state.preview.begin(), state.preview.end(), is_due);
}

}  // namespace

void set_status(Round& round, const std::string& text, bool animated) {
    round.state.status_text = text;
    round.state.status_animated = animated;
    if (animated) round.state.status_dots = 1;
    round.window.run_dots_timer(animated);
    render_status(round);
}

void invalidate_preview(Round& round) {
    RoundState& state = round.state;
    state.preview.clear();
    state.frozen_pot = 0;
    state.frozen_fee_estimate = 0;
    state.frozen_remainder = 0;
    state.frozen_skips = 0;
    state.frozen_token_id.clear();
    round.window.enable_control(CONTROL_PAY, false);
}

void set_busy(Round& round, bool busy, int control) {
    RoundState& state = round.state;
    if (!busy && state.busy_control != 0) {
        round.window.set_text(state.busy_control, caption_of(round, state.busy_control));
        state.busy_control = 0;
    }
    state.busy = busy;
    for (const int id : BUSY_SET) round.window.enable_control(id, !busy);
    if (!busy && !pay_may_be_enabled(state)) round.window.enable_control(CONTROL_PAY, false);
    if (busy && control != 0) {
        state.busy_control = control;
        round.window.enable_control(control, true);
        round.window.set_text(control, "Wait...");
    }
    round.window.set_text(CONTROL_CONNECT, connect_caption(round.wallet));
}

void on_dots_tick(Round& round) {
    RoundState& state = round.state;
    if (!state.status_animated) return;
    state.status_dots = state.status_dots % 3 + 1;
    render_status(round);
}
