// The compiled part of Boost.JSON. The program needs no library of it, only the headers.

#include <boost/json/src.hpp>
