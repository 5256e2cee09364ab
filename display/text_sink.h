// CTextSink: where the looks and the workspace writer put their text. Formatting goes
// through a stack buffer and the sink never needs the heap itself, so the same writers serve
// the crash path inside a signal handler.
//
//   CStringSink s;
//   s.Format("zoom= %f %f\n", 100.0, 100.0);
//   s.Put(caption.data(), caption.size());   // long texts go out whole, never formatted
#pragma once

#include <cstddef>
#include <cstring>
#include <string>

class CTextSink {
  public:
    static constexpr size_t kLine = 512;

    virtual ~CTextSink() = default;
    virtual void Put(const void* bytes, size_t n) = 0;
    void Text(const char* text) { Put(text, std::strlen(text)); }
    // printf into a stack buffer of kLine bytes; longer output is cut there, so anything of
    // unbounded length goes through Put.
    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
};

class CStringSink : public CTextSink {
  public:
    void Put(const void* bytes, size_t n) override {
        text.append(static_cast<const char*>(bytes), n);
    }
    std::string text;
};
