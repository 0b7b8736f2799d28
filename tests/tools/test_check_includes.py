"""The include check refuses each arrow that would turn the floors around, and only these."""

import pytest

from tools import check_includes


def write(root, path, *includes):
    file = root / path
    file.parent.mkdir(parents=True, exist_ok=True)
    lines = ["#include <vector>", *(f'#include "{name}"' for name in includes)]
    file.write_text("// head\n" + "\n".join(lines) + "\n")


@pytest.mark.parametrize(
    ("path", "included"),
    [
        ("host/array.cpp", "framework/model.h"),
        ("framework/model.h", "host/error.h"),
        ("framework/model.h", "framework/mi/wrapper.h"),
        ("framework/meta/registry.cpp", "design/iteration.h"),
        ("framework/mi/wrapper.h", "package/export.h"),
        ("design/iteration.cpp", "host/vcos/package.h"),
        ("design/figures/figure.cpp", "host/vexal.h"),
        ("simmanager/mm/job.cpp", "framework/mi/wrapper.h"),
        ("package/module.cpp", "binding/wrappers.h"),
        ("binding/wrappers.cpp", "host/detail/pool.h"),
        ("extension/objects.cpp", "framework/model.h"),
        ("design/iteration.cpp", "iteration.h"),
    ],
)
def test_a_forbidden_include_is_named_with_its_line(tmp_path, path, included):
    write(tmp_path, path, included)
    assert check_includes.violations(tmp_path) == [
        f'{tmp_path / path}:3: {check_includes.floor_of(path)} may not include "{included}"'
    ]


def test_includes_sideways_and_down_pass(tmp_path):
    write(tmp_path, "host/vcos/package.h", "host/array.h", "host/detail/pool.h")
    write(tmp_path, "framework/model.h", "framework/meta/registry.h", "host/array.h")
    write(tmp_path, "framework/mi/wrapper.h", "framework/model.h", "host/vcos/package.h")
    write(tmp_path, "design/iteration.cpp", "host/functions.h", "framework/zero.h")
    write(tmp_path, "package/module.cpp", "framework/mi/wrapper.h", "host/vcos/package.h")
    write(tmp_path, "binding/wrappers.cpp", "package/export.h", "host/vexal.h")
    assert check_includes.violations(tmp_path) == []


def test_a_file_outside_every_floor_is_reported(tmp_path):
    write(tmp_path, "misc/helper.h")
    assert "lies on no floor" in check_includes.violations(tmp_path)[0]
    assert check_includes.main([str(tmp_path)]) == 1
