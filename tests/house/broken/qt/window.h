// A window.
