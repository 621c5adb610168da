#include "base/settings.h"

// Made by the settings step of the build.
Settings build_settings();

static Settings& record() {
    static Settings the_record = build_settings();
    return the_record;
}

const Settings& settings() {
    return record();
}

void override_settings(const Settings& replacement) {
    record() = replacement;
}
