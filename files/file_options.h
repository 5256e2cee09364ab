// The options of the open, load and save dialogs, kept in the preferences file under
// "\n//open and save options\n" and "\n//save options\n".
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

class CKeyReader;

struct COpenOptions {
    std::string res4d[4];          // x y z t resolutions, as typed
    std::string skip4d[4];         // byte skips, as typed
    std::string offset;            // header bytes, as typed
    int baselines[3] = {1, 0, 0};  // ignore, add, subtract
    int swap = 0;
    int swapxy = 0;
    int datatype = 8;  // r4
    int filetype = 3;
    int perline = 0;  // 0 "1 x line", 1 "1 y line"
    int preview = 0;
    int dicom_scale = 0;
    int stay = 0;
    std::string data_format;
    int name_is_file = 1;        // naming rule 1 to 4
    int display[3] = {0, 0, 0};  // none, 1d, 2d
    int report = 0;

    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;
};

struct CSaveOptions {
    std::string txtformat;
    std::string separator;
    std::string eol;
    int stay = 0;
    int ftype = 0;
    int iqmp = 2;
    int swap = 0;
    int dtype = 6;
    int mat_version = 7;
    int all_doubles = 0;  // MAT: every array as class double
    int perline = 0;
    uint32_t nuid = 0;
    float rasinc = 0.0f;
    int fps = 0;
    int ppt = 0;

    int ScanfOptions(CKeyReader& reader);
    void PrintfOptions(FILE* file) const;
};
