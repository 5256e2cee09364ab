// The rows of the MAT, picture and movie formats in the file kinds. Kept apart from the
// formats themselves so that their tests link without the registry.
#include "files/avi_file.h"
#include "files/mat_file.h"
#include "files/picture_file.h"

void RegisterMatKinds() {
    CFileReader reader;
    reader.header = &ReadMatHeader;
    reader.load_space = &LoadMatFile;
    RegisterReader(5, reader);
    RegisterWriter({4, ".mat", &SaveMatFile});
}

void RegisterPictureKinds() {
    RegisterWriter({2, ".bmp .jpg .jpeg .png .gif", &SavePicture});
    RegisterWriter({3, ".avi", &SaveAviRow});
}
