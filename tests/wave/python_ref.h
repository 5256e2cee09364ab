// Runs a NumPy/SciPy script under Debian's interpreter and reads the numbers it prints.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

inline std::vector<double> python_values(const std::string& script) {
    // A file of this process's own: ctest runs tests side by side, each as its own process.
    const std::string path = testing::TempDir() + "wave_ref_" + std::to_string(getpid()) + ".py";
    std::ofstream(path) << "import numpy as np\nimport scipy.signal\n" << script;
    std::vector<double> values;
    FILE* pipe = popen((std::string(QUELMOR_PYTHON) + " " + path).c_str(), "r");
    if (pipe) {
        double v;
        while (std::fscanf(pipe, "%lf", &v) == 1) values.push_back(v);
        pclose(pipe);
    }
    std::remove(path.c_str());
    return values;
}

// Writes floats as a Python list literal.
inline std::string py_list(const float* v, size_t n) {
    std::string s = "[";
    char num[32];
    for (size_t i = 0; i < n; ++i) {
        std::snprintf(num, sizeof num, "%.9g,", v[i]);
        s += num;
    }
    return s + "]";
}
