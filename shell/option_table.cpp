#include "shell/option_table.h"

#include <exception>

#include "core/key_reader.h"

void COptionTable::Set(OptionModule slot, PrintfFn printf_options, ScanfFn scanf_options) {
    printf_[slot] = std::move(printf_options);
    scanf_[slot] = std::move(scanf_options);
}

bool COptionTable::Offer(CKeyReader& reader) const {
    if (reader.IsKey("mu_estimation_options")) {
        if (mu_estimation_options_) mu_estimation_options_(reader);
        return static_cast<bool>(mu_estimation_options_);
    }
    for (const ScanfFn& scanf_options : scanf_)
        if (scanf_options && scanf_options(reader)) return true;
    return false;
}

int COptionTable::ReadOptions(const std::string& path) const {
    FILE* file = std::fopen(path.c_str(), "r");
    if (!file) return 0;
    int taken = 0;
    CKeyReader reader(file);
    try {
        for (;;) {
            reader.Next();
            if (Offer(reader)) ++taken;
        }
    } catch (const CKeyReader::EndOfFile&) {
    } catch (const std::exception&) {
        // A malformed value ends the read where it stands.
    }
    std::fclose(file);
    return taken;
}

int COptionTable::WriteOptions(const std::string& path) const {
    FILE* file = std::fopen(path.c_str(), "w");
    if (!file) return 1;
    for (const PrintfFn& printf_options : printf_)
        if (printf_options) printf_options(file);
    if (mu_estimation_writer_) mu_estimation_writer_(file);
    return std::fclose(file) == 0 ? 0 : 1;
}
