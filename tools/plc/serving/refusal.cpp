#include "serving/refusal.h"

#include <iostream>

namespace plc {

bool refuse(const std::string &text)
{
    std::cerr << "fins_plc: " << text << std::endl;
    return false;
}

} // namespace plc
