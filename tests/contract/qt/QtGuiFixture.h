// A graphical application without a screen.
#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>

#include "fakes/QtTestLoop.h"
#include "fakes/TestApplication.h"

namespace vemo {

class QtGuiFixture : public testing::Test, protected TestApplication<QGuiApplication> {};

}  // namespace vemo
