// The compiled halves of the Boost libraries that are used without linking them.
#include <boost/json/src.hpp>
#include <boost/url/src.hpp>
