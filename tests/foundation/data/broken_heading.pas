  procedure Apply;

  procedure Foo(X: Integer)
    ;
  procedure Bar;
