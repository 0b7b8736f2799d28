"""Pictures of what came of a study, and the requests of a user interface for them.

    from kxsim.figures import Figures

    figures = Figures(results)
    figures.scatter(x="Kp", y="overshoot", c="Ki", Title="Overshoot")
    figures.save("pictures")

Each figure is a `kxsim.design.Figure` of a view and a properties object, elements of the model as
all others; drawing reads them. Matplotlib is needed to draw and to know the names of color maps.
"""

from __future__ import annotations

from kxsim.figures._data import Data, data
from kxsim.figures._errors import FigureError
from kxsim.figures._figures import Figures

__all__ = ["Data", "FigureError", "Figures", "data"]
