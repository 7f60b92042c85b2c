#pragma once
h
