#include "WriterLibrary.h"

#include "VtkWriter.h"

#include <stdexcept>

std::shared_ptr<Writer> WriterLibrary::getWriterOstrel(std::string type) {
    if (type == "VTK") return std::make_shared<VtkWriter>();
    throw std::invalid_argument("Writer Type " + type + " is not recognized");
}
