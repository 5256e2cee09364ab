#include "files/file_options.h"

#include <sstream>

#include "core/key_reader.h"

namespace {

// Fields typed in the dialog, one word each on one line; an empty field is written "-" so
// that the fields behind it keep their places.
int Words(CKeyReader& reader, const char* key, std::string* out, int n) {
    std::string line;
    if (!reader.String(key, &line)) return 0;
    std::istringstream words(line);
    for (int k = 0; k < n && words >> out[k]; ++k)
        if (out[k] == "-") out[k].clear();
    return 1;
}

void PrintWords(FILE* file, const char* key, const std::string* words, int n) {
    std::fprintf(file, "%s", key);
    for (int k = 0; k < n; ++k) {
        // A typed blank would split the field.
        std::string word = words[k].empty() ? "-" : words[k];
        for (char& c : word)
            if (c == ' ' || c == '\t') c = '_';
        std::fprintf(file, " %s", word.c_str());
    }
    std::fprintf(file, "\n");
}

}  // namespace

int COpenOptions::ScanfOptions(CKeyReader& reader) {
    if (Words(reader, "open_res4d=", res4d, 4)) return 1;
    if (Words(reader, "open_skip4d=", skip4d, 4)) return 1;
    if (Words(reader, "open_res_uv=", res_uv, 2)) return 1;
    if (Words(reader, "open_skip_uv=", skip_uv, 2)) return 1;
    if (Words(reader, "open_offset=", &offset, 1)) return 1;
    if (reader.Int3("open_baselines=", &baselines[0], &baselines[1], &baselines[2])) return 1;
    if (reader.Int("open_swap=", &swap)) return 1;
    if (reader.Int("open_swapxy=", &swapxy)) return 1;
    if (reader.Int("open_datatype=", &datatype)) return 1;
    if (reader.Int("open_filetype=", &filetype)) return 1;
    if (reader.Int("open_perline=", &perline)) return 1;
    if (reader.Int("open_preview=", &preview)) return 1;
    if (reader.Int("open_dicom_scale=", &dicom_scale)) return 1;
    if (reader.Int("open_stay=", &stay)) return 1;
    if (reader.String("open_data_format=", &data_format)) return 1;
    if (reader.Int("load_name_is_file=", &name_is_file)) return 1;
    if (reader.Int3("load_display=", &display[0], &display[1], &display[2])) return 1;
    if (reader.Int("load_report=", &report)) return 1;
    return 0;
}

void COpenOptions::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n//open and save options\n");
    PrintWords(file, "open_res4d=", res4d, 4);
    PrintWords(file, "open_skip4d=", skip4d, 4);
    PrintWords(file, "open_res_uv=", res_uv, 2);
    PrintWords(file, "open_skip_uv=", skip_uv, 2);
    std::fprintf(file, "open_offset= %s\n", offset.c_str());
    std::fprintf(file, "open_baselines= %d %d %d\n", baselines[0], baselines[1], baselines[2]);
    std::fprintf(file, "open_swap= %d\n", swap);
    std::fprintf(file, "open_swapxy= %d\n", swapxy);
    std::fprintf(file, "open_datatype= %d\n", datatype);
    std::fprintf(file, "open_filetype= %d\n", filetype);
    std::fprintf(file, "open_perline= %d\n", perline);
    std::fprintf(file, "open_preview= %d\n", preview);
    std::fprintf(file, "open_dicom_scale= %d\n", dicom_scale);
    std::fprintf(file, "open_stay= %d\n", stay);
    std::fprintf(file, "open_data_format= %s\n", data_format.c_str());
    std::fprintf(file, "load_name_is_file= %d\n", name_is_file);
    std::fprintf(file, "load_display= %d %d %d\n", display[0], display[1], display[2]);
    std::fprintf(file, "load_report= %d\n", report);
}

int CSaveOptions::ScanfOptions(CKeyReader& reader) {
    if (reader.String("save_txtformat=", &txtformat)) return 1;
    if (reader.String("save_separator=", &separator)) return 1;
    if (reader.String("save_eol=", &eol)) return 1;
    if (reader.Int("save_stay=", &stay)) return 1;
    if (reader.Int("save_ftype=", &ftype)) return 1;
    if (reader.Int("save_iqmp=", &iqmp)) return 1;
    if (reader.Int("save_swap=", &swap)) return 1;
    if (reader.Int("save_dtype=", &dtype)) return 1;
    if (reader.Int("save_mat_version=", &mat_version)) return 1;
    if (reader.Int("save_all_doubles=", &all_doubles)) return 1;
    if (reader.Int("save_perline=", &perline)) return 1;
    if (reader.Hex("save_nuid=", &nuid)) return 1;
    if (reader.Float("save_rasinc=", &rasinc)) return 1;
    if (reader.Int("save_fps=", &fps)) return 1;
    if (reader.Int("save_ppt=", &ppt)) return 1;
    return 0;
}

void CSaveOptions::PrintfOptions(FILE* file) const {
    std::fprintf(file, "\n//save options\n");
    std::fprintf(file, "save_txtformat= %s\n", txtformat.c_str());
    std::fprintf(file, "save_separator= %s\n", separator.c_str());
    std::fprintf(file, "save_eol= %s\n", eol.c_str());
    std::fprintf(file, "save_stay= %d\n", stay);
    std::fprintf(file, "save_ftype= %d\n", ftype);
    std::fprintf(file, "save_iqmp= %d\n", iqmp);
    std::fprintf(file, "save_swap= %d\n", swap);
    std::fprintf(file, "save_dtype= %d\n", dtype);
    std::fprintf(file, "save_mat_version= %d\n", mat_version);
    std::fprintf(file, "save_all_doubles= %d\n", all_doubles);
    std::fprintf(file, "save_perline= %d\n", perline);
    std::fprintf(file, "save_nuid= %x\n", nuid);
    std::fprintf(file, "save_rasinc= %f\n", rasinc);
    std::fprintf(file, "save_fps= %d\n", fps);
    std::fprintf(file, "save_ppt= %d\n", ppt);
}
