#include "records/ui_settings.h"

#include "base/json_file.h"
#include "records/record_files.h"

void load_settings(UiSettings& settings) {
    Json document;
    if (!read_json_file(settings_file_path(), document)) return;
    settings.theme = json_text(document, "theme");
    settings.last_vault = json_text(document, "last_vault");
}

void save_settings(const UiSettings& settings) {
    Json document = {{"theme", settings.theme}};
    if (!settings.last_vault.empty()) document["last_vault"] = settings.last_vault;
    write_text_file(settings_file_path(), dump_json(document, 2));
}
