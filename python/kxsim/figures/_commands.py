"""Carrying out the command records with which a user interface asks for changes."""

from __future__ import annotations

from collections.abc import Callable
from typing import Any

from kxsim.design.internal import command
from kxsim.figures._errors import FigureError


def _change(figures: Any, record: Any) -> None:
    figures.change(record.name, record.value)


ACTIONS: dict[type, Callable[[Any, Any], Any]] = {
    command.CreateFigure: lambda figures, record: figures.create(record.FigureType),
    command.CreateCustomPlot: lambda figures, record: figures.custom(record.PlotConfigId),
    command.DeleteFigure: lambda figures, record: figures.delete(record.FigureId),
    command.ChangeBooleanFigureProperty: _change,
    command.ChangeDoubleFigureProperty: _change,
    command.ChangeStringFigureProperty: _change,
    command.SelectRuns: lambda figures, record: figures.select(
        record.RunIds, append=record.AppendToExistingSelection
    ),
    command.DeselectRuns: lambda figures, record: figures.deselect(record.RunIds),
}


def carry_out(figures: Any, record: Any) -> Any:
    """Does what a record asks for and takes it out of its model, all in one transaction.

    One that fails is taken out as well: whoever made it has the exception, and nothing changed.
    """
    action = ACTIONS.get(type(record))
    if action is None:
        raise TypeError(f"this is no command: {record!r}")
    if record.model() != figures.model:
        raise FigureError("ForeignCommand")
    try:
        with figures.model.transaction():
            done = action(figures, record)
            record.destroy()
    except BaseException:
        if record.is_valid:
            record.destroy()
        raise
    return done


def carry_out_all(
    figures: Any, elements: Any, on_error: Callable[[Exception], object] | None
) -> None:
    """The records among new elements, in order; a failing one keeps none of the others back."""
    failures = []
    for record in elements:
        if type(record) not in ACTIONS or not record.is_valid:
            continue
        try:
            carry_out(figures, record)
        except Exception as error:
            failures.append(error)
            if on_error:
                on_error(error)
    if failures and not on_error:
        raise failures[0] if len(failures) == 1 else ExceptionGroup("commands failed", failures)
