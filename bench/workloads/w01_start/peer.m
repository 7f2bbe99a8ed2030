% SPDX-License-Identifier: GPL-3.0-or-later
disp(1 + 2*3)
