"""Would catch a wrong parameter, error or band, and curves through what no curve goes through."""

import numpy as np
import pytest
from scipy.stats import t as student
from tavelo_tools import Fit, fit_hill_hyperbola, fit_hill_pca, hill_pca, intercept, mean_and_error


def test_fits_find_the_curves_they_are_given() -> None:
    pca = np.linspace(7.0, 4.5, 9)
    assert hill_pca(5.7, 300.0, 5.7, 2.5) == 150.0
    force = 300.0 * 10 ** (-2.5 * pca) / (10 ** (-2.5 * pca) + 10 ** (-2.5 * 5.7))
    assert list(fit_hill_pca(pca, force).values.values()) == pytest.approx([300.0, 5.7, 2.5])
    speed = np.linspace(0.0, 900.0, 8)
    # Hill's hyperbola solved for the force: (F + a) (v + a v0) = (1 + a) a v0.
    relative = 1.3 * 0.3 * 1000.0 / (speed + 0.3 * 1000.0) - 0.3
    fit = fit_hill_hyperbola(speed, relative)
    assert fit.values == pytest.approx({"v0": 1000.0, "a/F0": 0.3})
    assert intercept([-4.0, -2.0, 0.0], [0.5, 0.75, 1.0]) == pytest.approx(-8.0)


def test_the_band_is_that_of_linear_regression() -> None:
    x, y = np.array([0.0, 1.0, 2.0, 4.0]), np.array([1.0, 2.5, 2.0, 5.5])
    spread = ((x - x.mean()) ** 2).sum()
    slope = ((x - x.mean()) * y).sum() / spread
    height = y.mean() - slope * x.mean()
    s2 = ((y - height - slope * x) ** 2).sum() / 2
    ends = 0.25 + x.mean() ** 2 / spread, -x.mean() / spread, 1 / spread
    covariance = s2 * np.array([ends[:2], ends[1:]])
    fit = Fit({"a": height, "b": slope}, {}, covariance, 4, lambda x, a, b: a + b * x)
    places = np.array([-1.0, 1.75, 6.0])
    half = student.ppf(0.95, 2) * np.sqrt(s2 * (0.25 + (places - x.mean()) ** 2 / spread))
    low, high = fit.band(places, level=0.9)
    assert high - low == pytest.approx(2 * half, rel=1e-6)
    assert (low + high) / 2 == pytest.approx(height + slope * places)
    assert fit.band(1.75, 0.9)[0] == pytest.approx(low[1])


def test_errors_are_those_of_the_scatter() -> None:
    chance = np.random.default_rng(3)
    pca = np.linspace(7.0, 4.5, 12)
    fits = [fit_hill_pca(pca, hill_pca(pca, 300, 5.7, 2.5) + chance.normal(0, 6, 12)) for _ in range(200)]
    for name in ("F0", "pCa50", "n"):
        scatter = np.std([fit.values[name] for fit in fits])
        assert np.mean([fit.errors[name] for fit in fits]) == pytest.approx(scatter, rel=0.2)


@pytest.mark.parametrize(
    "fit, x, y, told",
    [
        (fit_hill_pca, [6.0, 5.0], [1.0, 2.0], "2 different places are too few; it takes 4"),
        (fit_hill_pca, range(5), [0.0] * 5, "all 5 values are 0"),
        (fit_hill_pca, range(5), [1, 2, np.nan, 4, 5], "point 3 of 5 holds nan"),
        (fit_hill_pca, range(5), range(4), "5 places but 4 values"),
        (fit_hill_pca, [4, 5, 6, 7, 8], [3.0] * 5, "do not determine|no curve"),
        (intercept, [1, 2, 3], [5, 5, 5], "never meets 0"),
        (mean_and_error, [1.0, 2.0], 4, "2 values can't be cut into 4 blocks"),
    ],
)
def test_what_can_not_be_fitted_is_refused(fit, x, y, told) -> None:  # noqa: ANN001
    with pytest.raises(ValueError, match=told):
        fit(x, y)
