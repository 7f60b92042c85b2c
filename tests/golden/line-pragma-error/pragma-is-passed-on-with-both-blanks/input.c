#pragma once
x
