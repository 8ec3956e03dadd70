// Precompiled for the views: the core set and the widgets that nearly each view includes.
#pragma once

#include "pch_core.h"

#include <QApplication>
#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QWidget>
